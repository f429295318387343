#pragma once
// The check for internal invariants, active in every build:
//
//     QVX_LOGIC_ASSERT(timeout >= 0);
//
// The code behind it must be safe to run although the condition is false, since a hook may return. Checks whose file
// and line callers rely on call ThrowLogicException with them instead.

#include <qvxsys/LogicException.h>

#define QVX_LOGIC_ASSERT(condition)                                                                                    \
    (static_cast<bool>(condition) ? static_cast<void>(0) : ThrowLogicException(__FILE__, __LINE__, #condition))
