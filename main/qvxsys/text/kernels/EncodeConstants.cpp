#include "kernels/EncodeConstants.h"

constinit qvxsys::text::avx2::EncodeConstants const qvxsys::text::avx2::encodeConstants{};
constinit qvxsys::text::avx512::EncodeConstants const qvxsys::text::avx512::encodeConstants{};
