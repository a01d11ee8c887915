#pragma once

#include <QString>
#include <QStringView>

#include <memory>

namespace quoril {

class Session;

/// The session of the person on the host, whose machine is the tree in that folder. What is broadcast there
/// stays among the programs that work on the same tree.
std::unique_ptr<Session> openHostSession(const QString& treeFolder);

/// The name by which a message of a tree's programs is registered on the host.
QString treeMessage(QStringView message, const QString& treeFolder);

} // namespace quoril
