#pragma once

#include <QString>
#include <QStringView>

#include <compare>

namespace quoril {

// The one notion of equal names in the whole program. Nothing else folds a name: QString's case folding makes
// other names equal, and its upper and lower case change their length.

/// The upper case of one code unit as Windows compares names: one unit becomes one unit, and only where the
/// way back exists (so neither U+0131 nor U+017F meets an ASCII letter). Surrogates stay as they are.
char16_t upcase(char16_t unit);

/// `text` with every unit in upper case; same length, and the same name.
QString upcase(QStringView text);

/// `text` with every unit in lower case that upcase() leads back from; same length, and the same name.
QString downcase(QStringView text);

/// Whether two names are the same name without regard to case.
bool foldedEquals(QStringView left, QStringView right);

/// The order of names in the registry: by upper-cased units, a shorter name before its extension.
std::strong_ordering foldedCompare(QStringView left, QStringView right);

/// For unordered maps that are looked up by a name without regard to case.
struct FoldedHash
{
    std::size_t operator()(QStringView name) const;
};
struct FoldedEqual
{
    bool operator()(QStringView left, QStringView right) const { return foldedEquals(left, right); }
};

} // namespace quoril
