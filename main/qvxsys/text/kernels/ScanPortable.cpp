// The scans for any x86-64.

#include "kernels/ScanLoops.h"

namespace qvxsys::text::portable {

QVX_DEFINE_SCANS(Sse2)

} // namespace qvxsys::text::portable
