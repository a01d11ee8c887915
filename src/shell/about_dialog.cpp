#include "shell/about_dialog.h"

#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/template_dialog.h"
#include "shell/version_record.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// The program's name, with the first two numbers of the version where that is known.
QString programText(const VersionRecord& version)
{
    const QString name = loadText(text::AboutText);
    if (version.major <= 0)
        return name;
    QString shown = loadText(text::VersionTemplate);
    for (const qint32 number : {version.major, version.minor}) {
        if (const qsizetype place = shown.indexOf(u"%d"); place >= 0)
            shown.replace(place, 2, QString::number(number));
    }
    return shown.replace(u"%s"_s, name);
}

} // namespace

CAboutDlg::CAboutDlg(const VersionRecord& version, QWidget* parent) : QDialog(parent)
{
    constexpr int IconSize = 64;
    const DialogTemplate resources = activeResources().dialog(about_dialog::Id);
    setWindowTitle(resources.title);
    setProperty(HelpTopicProperty, u"#dialog-101"_s);

    auto* text = new QLabel(programText(version), this);
    text->setObjectName(QString::number(about_dialog::Text));
    auto* icon = new QLabel(this);
    icon->setPixmap(windowIcon().pixmap(QSize(IconSize, IconSize), devicePixelRatio()));

    auto* ok = new QPushButton(resources.caption(about_dialog::Ok), this);
    ok->setObjectName(QString::number(about_dialog::Ok));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);

    auto* row = new QHBoxLayout;
    row->setSpacing(16);
    row->addWidget(icon);
    row->addWidget(text, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addSpacing(8);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace quoril
