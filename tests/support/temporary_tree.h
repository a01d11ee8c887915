#pragma once

#include "formats/regf_hive.h"
#include "platform/tree/registry_text.h"
#include "platform/tree/tree_machine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace quoril::test {

using namespace Qt::StringLiterals;

/// A tree in a folder of its own, with empty hives SYSTEM and SOFTWARE.
class TemporaryTree
{
public:
    TemporaryTree()
    {
        makeFolder(u"Windows/System32/config"_s);
        for (const QString& name : {u"SYSTEM"_s, u"SOFTWARE"_s})
            write(u"Windows/System32/config/"_s + name, *regf::Hive::create(name).serialize(0));
    }

    QString root() const { return m_folder.path(); }
    QString host(const QString& below) const { return root() + u'/' + below; }
    QString systemHive() const { return host(u"Windows/System32/config/SYSTEM"_s); }

    void makeFolder(const QString& below) const { ASSERT_TRUE(QDir().mkpath(host(below))); }
    void write(const QString& below, const QByteArray& bytes) const
    {
        QFile file(host(below));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size())
            << qPrintable(below);
    }
    QByteArray read(const QString& below) const
    {
        QFile file(host(below));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void program(const QString& below, const QByteArray& script) const
    {
        write(below, "#!/bin/sh\n" + script);
        QFile::setPermissions(host(below), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

private:
    QTemporaryDir m_folder;
};

/// A key by its path below HKEY_LOCAL_MACHINE.
inline Result<RegistryKeyHandle> keyAt(
    Registry& registry, QStringView path, quint32 access = key_access::AllAccess)
{
    return openPath(**registry.localMachine(), path, access);
}

/// Takes a text of the registry editor into the tree, without its first line.
inline void import(TreeRegistry& registry, const QByteArray& text)
{
    const Status status = importRegistryText(registry, "Windows Registry Editor Version 5.00\r\n\r\n" + text);
    ASSERT_EQ(status.errorNumber(), 0u) << (status ? "" : qPrintable(status.failure().detail));
}

} // namespace quoril::test
