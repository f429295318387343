// The library's public types and nothing else, compiled into debug information for debuggers to use with a library that
// has none (libqvxsys_printers.py says why). No code is made of this.

#include <qvxsys/qvxsys.h>
