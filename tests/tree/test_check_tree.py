#!/usr/bin/env python3
"""The tree check finds each kind of offence in a small tree made for it."""
import pathlib
import tempfile
import unittest

import check_tree

OFFENCES = {
    "main/diagnostics/tmemory_up.cpp": ("#include <qvxsys/TStringCore.h>\n", "layer memory includes"),
    "main/qvxsys/text/Up.cpp": ("#include <qvxsys/TError.h>\n", "layer text includes"),
    "main/qvxsys/text/Conditional.cpp": ("#if defined(__linux__)\n#endif\n", "conditional"),
    "main/qvxsys/text/Icu.cpp": ("#include <unicode/uchar.h>\n", "ICU"),
    "main/qvxsys/text/Windows.cpp": ("#include <Windows.h>\n", "windows.h"),
    "main/qvxsys/text/Seam_win.cpp": ("#include <windows.h>\n", "windows.h"),
    "main/qvxsys/text/Gate.cpp": ('#include "WindowsApi.h"\n', "sources for Windows"),
    "main/qvxsys/text/Missing.cpp": ('#include "NoSuchFile.h"\n', "no file"),
    "main/elsewhere/Lost.cpp": ("", "no layer"),
    "public/qvxsys/TPrivate.h": ('#include "../../main/qvxsys/text/Inner.h"\n', "private one"),
    "public/qvxsys/TConstant.h": (
        "class QVXSYS_API A\n{\n    static constexpr int f(int k) { return k; }\n    static constexpr int k = 1;\n};\n"
        "class B\n{\n    static constexpr int k = 1;\n};\n", "QVXSYS_API_CONSTANT"),
    "main/qvxsys/text/Long.cpp": ("\n" * 1001, "limit"),
}
CLEAN = {
    "public/qvxsys/TStringCore.h": "#include <string>\n",
    "main/qvxsys/text/Inner.h": "#include <qvxsys/TMemory.h>\n",
    "main/qvxsys/text/Good.cpp": '#include "Inner.h"\n#include <qvxsys/TStringCore.h>\n',
    "public/qvxsys/TMemory.h": "#include <qvxsys/Platform.h>\n",
    "public/qvxsys/Platform.h": "#if defined(_WIN32)\n#endif\n",
    "main/platform/WindowsApi.h": "#include <windows.h>\n",
    "main/qvxsys/text/Other_win.cpp": '#include "WindowsApi.h"\n',
    "tools/qvx/main.cpp": "#include <qvxsys/TStringCore.h>\n",
}


class TreeCheck(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.folder.name).resolve()
        for name, text in CLEAN.items():
            self.write(name, text)

    def tearDown(self):
        self.folder.cleanup()

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def findings(self):
        return [f for path in check_tree.sources(self.root) for f in check_tree.check_file(self.root, path)]

    def test_clean_tree(self):
        self.assertEqual(self.findings(), [])

    def test_each_offence_is_found_where_it_is(self):
        for name, (text, expected) in OFFENCES.items():
            with self.subTest(name):
                self.write(name, text)
                found = self.findings()
                (self.root / name).unlink()
                self.assertEqual(len(found), 1, found)
                self.assertTrue(found[0].startswith(name) and expected in found[0], found)

    def test_header_that_needs_another_one(self):
        self.write("public/qvxsys/TNeedy.h", "inline std::string f() { return {}; }\n")
        found = list(check_tree.check_headers(self.root, "c++"))
        self.assertEqual([f.split(":")[0] for f in found], ["public/qvxsys/TNeedy.h"])


if __name__ == "__main__":
    unittest.main()
