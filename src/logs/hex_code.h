#pragma once

#include <QtGlobal>

namespace quoril {

/// The value of a hexadecimal digit, -1 for any other unit.
constexpr int hexDigit(char16_t unit)
{
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    if (unit >= u'A' && unit <= u'F')
        return unit - u'A' + 10;
    if (unit >= u'a' && unit <= u'f')
        return unit - u'a' + 10;
    return -1;
}

} // namespace quoril
