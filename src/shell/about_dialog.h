#pragma once

#include <QDialog>

namespace quoril {

struct VersionRecord;

/// The program's name and, where its version is known, the first two numbers of it.
class CAboutDlg : public QDialog
{
    Q_OBJECT

public:
    explicit CAboutDlg(const VersionRecord& version, QWidget* parent = nullptr);
};

} // namespace quoril
