#pragma once

#include "formats/error.h"
#include "services/service_info.h"

#include <QObject>
#include <QString>

#include <vector>

namespace quoril {

/// The one document of the process: the catalogue of services and the settings of this run. It lives as long
/// as the window and is never stored.
class CQuorilManagerDoc : public QObject
{
    Q_OBJECT

public:
    /// Resets the settings and sets the start title. The catalogue stays as it is: it was filled before.
    void OnNewDocument();

    /// The document of a file given on the command line: nothing but its name is taken. 2 if there is no
    /// such file, 5 if it can't be opened for reading, as a folder can't.
    Status OnOpenDocument(const QString& hostPath);

    void AddService(const ServiceInfo& service) { m_services.push_back(service); }
    /// Removes all records; references to them are void.
    void ClearServices();

    /// The record of exactly that name (case counts), or null.
    ServiceInfo* findService(QStringView name);

    const QString& title() const { return m_title; }
    void SetTitle(const QString& title);

    std::vector<ServiceInfo> m_services; ///< in the registry's order
    quint32 m_lock_timeout = 0; ///< idle time before the lock in milliseconds, 0 disabled
    QString m_title_text; ///< the start title

Q_SIGNALS:
    void titleChanged(const QString& title);

private:
    QString m_title;
};

} // namespace quoril
