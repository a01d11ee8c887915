#pragma once

#include "formats/error.h"

#include <QByteArray>
#include <QStringView>

namespace quoril {

class TreeRegistry;

/// Carries out a text in the registry editor's form (UTF-16LE or UTF-8) on the hives SYSTEM and SOFTWARE,
/// each in one write. A text that can't be read as a whole changes nothing: 1009, the detail names the line.
/// A path outside the two hives is 2; other errors as of a change. The hives are written one after the other.
Status importRegistryText(TreeRegistry& registry, const QByteArray& text);

/// The key and all below it in the registry editor's form. The path is one below HKEY_LOCAL_MACHINE, with or
/// without that name before it. 2 if there is no such key.
Result<QByteArray> exportRegistryText(TreeRegistry& registry, QStringView path);

} // namespace quoril
