#include "platform/machine_choice.h"

#include "platform/machine.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>

namespace quoril {

using namespace Qt::StringLiterals;

MachineChoice unnamedMachine()
{
    if (QString folder = QCoreApplication::applicationDirPath() + u"/machine"_s; QFileInfo(folder).isDir())
        return {std::move(folder), MachineChoice::Origin::BesideProgram};
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return {data + u"/QuorilManager/machine"_s, MachineChoice::Origin::UserData};
}

std::unique_ptr<Machine> openHostMachine()
{
    return nullptr;
}

} // namespace quoril
