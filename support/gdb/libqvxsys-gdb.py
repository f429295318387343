# gdb runs this file when it has loaded the library that it is installed for. The views lie in a folder beside that, so
# that an installation can be moved.
import os
import sys

import gdb

_folder = os.path.join(os.path.dirname(os.path.realpath(gdb.current_objfile().filename)), 'qvxsys', 'gdb')
if _folder not in sys.path:
    sys.path.insert(0, _folder)

import libqvxsys_printers

libqvxsys_printers.register(gdb.current_objfile())
libqvxsys_printers.add_types(os.path.join(_folder, 'libqvxsys_types.o'))
