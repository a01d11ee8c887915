#include "formats/name_case.h"

#include <QChar>

#include <algorithm>

namespace quoril {

namespace {

template <typename Map> QString unitByUnit(QStringView text, Map map)
{
    QString result(text.size(), Qt::Uninitialized);
    std::transform(text.utf16(), text.utf16() + text.size(), reinterpret_cast<char16_t*>(result.data()), map);
    return result;
}

} // namespace

char16_t upcase(char16_t unit)
{
    if (unit < 0x80)
        return unit >= u'a' && unit <= u'z' ? char16_t(unit - 0x20) : unit;
    if (QChar::isSurrogate(unit))
        return unit;
    // The capitals of U+1F80 to U+1FF3 that are one unit are title case: upper case writes their iota apart.
    for (const char32_t upper : {QChar::toUpper(char32_t(unit)), QChar::toTitleCase(char32_t(unit))}) {
        if (upper != unit && upper <= 0xFFFF && QChar::toLower(upper) == unit)
            return char16_t(upper);
    }
    return unit;
}

QString upcase(QStringView text)
{
    return unitByUnit(text, [](char16_t unit) { return upcase(unit); });
}

QString downcase(QStringView text)
{
    return unitByUnit(text, [](char16_t unit) {
        const char32_t lower = QChar::isSurrogate(unit) ? unit : QChar::toLower(char32_t(unit));
        return lower <= 0xFFFF && upcase(char16_t(lower)) == unit ? char16_t(lower) : unit;
    });
}

bool foldedEquals(QStringView left, QStringView right)
{
    return left.size() == right.size()
        && std::equal(left.utf16(), left.utf16() + left.size(), right.utf16(),
            [](char16_t a, char16_t b) { return a == b || upcase(a) == upcase(b); });
}

std::strong_ordering foldedCompare(QStringView left, QStringView right)
{
    const qsizetype common = std::min(left.size(), right.size());
    for (qsizetype i = 0; i < common; ++i) {
        const char16_t a = left.utf16()[i];
        const char16_t b = right.utf16()[i];
        if (a == b)
            continue;
        if (const auto order = upcase(a) <=> upcase(b); order != std::strong_ordering::equal)
            return order;
    }
    return left.size() <=> right.size();
}

std::size_t FoldedHash::operator()(QStringView name) const
{
    std::size_t hash = 0xcbf29ce484222325U;
    for (qsizetype i = 0; i < name.size(); ++i)
        hash = (hash ^ upcase(name.utf16()[i])) * 0x100000001b3U;
    return hash;
}

} // namespace quoril
