#include "resources/file_filters.h"

namespace quoril {

using namespace Qt::StringLiterals;

QStringList fileFilters(const QString& text)
{
    const QStringList parts = text.split(u'|', Qt::SkipEmptyParts);
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString pattern = parts[i + 1] == u"*.*" ? u"*"_s : parts[i + 1];
        filters.append(parts[i] + u" ("_s + pattern + u')');
    }
    return filters;
}

} // namespace quoril
