#!/usr/bin/env python3
"""The throw-site check finds each kind of offence."""
import pathlib
import tempfile
import unittest

import check_throw_sites

GOOD = "throw E(u\"a\", ThrowSite(0x00000001));\n// ThrowSite(0x00000002)\nthrow F(\n    ThrowSite(\n  0x00000002));\n"
# Each hides its site from a reader who takes no notice of literals and comments.
SITES = (
    'throw E(u"http://a", ThrowSite(0x00000003));',
    'throw E(u"/*", ThrowSite(0x00000003)); // */',
    'throw E(u"a\\"//", ThrowSite(0x00000003));',
    "throw E('\"', ThrowSite(0x00000003)); // \"",
    "throw E(1'000'000, \"//\", ThrowSite(0x00000003));",
    'throw E(u\'"\', "//", ThrowSite(0x00000003));',
    'throw E(R"x(a)" // )x", ThrowSite(0x00000003));',
    "// don't\nthrow E(ThrowSite(0x00000003)); // don't",
    "throw E(ThrowSite{0x00000003});",
)
COMMENTS = ("/* ThrowSite(0x00000003) */", '/* " */ // "ThrowSite(0x00000003)', '"a"; // ThrowSite(0x00000003) "b"')
OFFENCES = {
    "throw E(ThrowSite(0x00000002));": "used at main/Good.cpp:4, main/Other.cpp:1",
    "throw E(ThrowSite(kCode));": "Other.cpp:1: the identifier is not a literal",
    "throw E(ThrowSite(0xabcdef01));": "Other.cpp:1: the identifier is not a literal",
    "throw E(ThrowSite(0xABC));": "Other.cpp:1: the identifier is not a literal",
    'auto n = u"QuorvexException_AutoGen_0x00000009";': "spells out",
    "auto e = QuorvexError::MakeError(0x9, name);": "by hand",
    "auto e = QuorvexError::MakeError(code, name);": "by hand",
    "throw E(ThrowSite{kCode});": "Other.cpp:1: the identifier is not a literal",
}


class ThrowSites(unittest.TestCase):
    def check(self, other):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "main").mkdir()
            (root / "main/Good.cpp").write_text(GOOD)
            (root / "main/Other.cpp").write_text(other)
            return check_throw_sites.check(root)

    def test_sites_are_collected(self):
        sites, findings = self.check("ThrowSite(std::uint32_t identifier);")
        self.assertEqual((sorted(sites), findings), (["0x00000001", "0x00000002"], []))

    def test_literals_hide_no_site_and_comments_are_none(self):
        for text in SITES + COMMENTS:
            with self.subTest(text):
                sites, findings = self.check(text)
                self.assertEqual(("0x00000003" in sites, findings), (text in SITES, []))

    def test_each_offence_is_found(self):
        for text, expected in OFFENCES.items():
            with self.subTest(text):
                findings = self.check(text)[1]
                self.assertEqual(len(findings), 1, findings)
                self.assertIn(expected, findings[0])


if __name__ == "__main__":
    unittest.main()
