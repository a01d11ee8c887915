#pragma once

#include "formats/reg_text.h"
#include "formats/regf_hive.h"

#include <algorithm>

namespace quoril::test {

/// Carries the operations of a registry text out below the root of a hive.
class HiveSink : public regtext::Sink
{
public:
    /// The root is not owned and lives longer.
    explicit HiveSink(regf::Key& root) : m_root(root) { }

    Status createKey(QStringView path) override
    {
        const Result<regf::Key*> key = m_root.addPath(path, 1);
        return key ? Status() : Status(key.failure());
    }
    Status deleteKey(QStringView path) override
    {
        const qsizetype last = path.lastIndexOf(u'\\');
        if (regf::Key* parent = m_root.find(path.first(std::max<qsizetype>(last, 0))))
            parent->removeChild(path.sliced(last + 1), 1);
        return {};
    }
    Status setValue(QStringView path, QStringView name, quint32 type, const QByteArray& data) override
    {
        return m_root.find(path)->setValue(name, type, data, 1);
    }
    Status deleteValue(QStringView path, QStringView name) override
    {
        m_root.find(path)->removeValue(name, 1);
        return {};
    }

private:
    regf::Key& m_root;
};

} // namespace quoril::test
