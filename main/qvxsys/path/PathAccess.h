#pragma once
// Paths of texts that are in generic form already and are not to be normalised: pieces of paths, names of the file
// system.

#include <qvxsys/TPathCore.h>

struct qvxsys::detail::PathAccess
{
    [[nodiscard]] static TPathCore AsIs(TStringCore&& text) noexcept
    {
        return TPathCore(TPathCore::AsIs(), static_cast<TStringCore&&>(text));
    }
    [[nodiscard]] static TPathCore AsIs(TStringView text)
    {
        return TPathCore(TPathCore::AsIs(), text.data(), text.length());
    }
};
