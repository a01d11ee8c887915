#include "shell/quoril_manager_doc.h"

#include "resources/resource_module.h"
#include "resources/text_ids.h"

#include <QFile>
#include <QFileInfo>

namespace quoril {

void CQuorilManagerDoc::OnNewDocument()
{
    m_lock_timeout = 0;
    m_title_text = loadText(text::SelectService);
    SetTitle(m_title_text);
}

Status CQuorilManagerDoc::OnOpenDocument(const QString& hostPath)
{
    QFile file(hostPath);
    const QFileInfo info(hostPath);
    if (info.isDir() || !file.open(QIODevice::ReadOnly)) {
        const bool isThere = info.exists() || file.error() == QFileDevice::PermissionsError;
        return Error{isThere ? error::AccessDenied : error::FileNotFound, hostPath};
    }
    SetTitle(info.fileName());
    return {};
}

void CQuorilManagerDoc::ClearServices()
{
    std::vector<ServiceInfo>().swap(m_services);
}

ServiceInfo* CQuorilManagerDoc::findService(QStringView name)
{
    for (ServiceInfo& service : m_services) {
        if (service.Name == name)
            return &service;
    }
    return nullptr;
}

void CQuorilManagerDoc::SetTitle(const QString& title)
{
    m_title = title;
    Q_EMIT titleChanged(m_title);
}

} // namespace quoril
