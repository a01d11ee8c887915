#include "report/report_file_dialog.h"

#include "resources/resource_module.h"
#include "resources/text_ids.h"

#include <QDir>
#include <QFileDialog>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// "Name (*.a)|*.a|Name (*.*)|*.*|" as the toolkit's filters: those for all files match names without an
/// extension too.
QStringList nameFilters(const QString& text)
{
    const QStringList parts = text.split(u'|', Qt::SkipEmptyParts);
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString pattern = parts[i + 1] == u"*.*" ? u"*"_s : parts[i + 1];
        filters.append(parts[i].section(u" ("_s, 0, 0) + u" ("_s + pattern + u')');
    }
    return filters;
}

} // namespace

QString askReportFile(QWidget* parent, const QString& proposedName)
{
    QFileDialog dialog(parent, LoadText(text::SaveReportTitle));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setNameFilters(nameFilters(LoadText(text::ReportFilter)));
    dialog.setDefaultSuffix(u"txt"_s);
    dialog.selectFile(proposedName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return QDir::toNativeSeparators(dialog.selectedFiles().constFirst());
}

} // namespace quoril
