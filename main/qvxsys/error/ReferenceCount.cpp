#include <qvxsys/ReferenceCount.h>

#include "LogicAssert.h"

RefCntObject::~RefCntObject() = default;

namespace qvxsys::detail {

void NullRefCntPtr()
{
    // The condition of RefCntPtr's dereferencing operators.
    constexpr void const* m_ptr = nullptr;
    QVX_LOGIC_ASSERT(m_ptr);
}

} // namespace qvxsys::detail
