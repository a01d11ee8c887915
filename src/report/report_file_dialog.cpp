#include "report/report_file_dialog.h"

#include "resources/file_filters.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"

#include <QDir>
#include <QFileDialog>

namespace quoril {

using namespace Qt::StringLiterals;

QString askReportFile(QWidget* parent, const QString& proposedName)
{
    QFileDialog dialog(parent, loadText(text::SaveReportTitle));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setNameFilters(fileFilters(loadText(text::ReportFilter)));
    dialog.setDefaultSuffix(u"txt"_s);
    dialog.selectFile(proposedName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return QDir::toNativeSeparators(dialog.selectedFiles().constFirst());
}

} // namespace quoril
