#pragma once

#include "fake_calls.h"
#include "platform/files.h"

#include <QBuffer>
#include <QHash>
#include <QStringBuilder>

#include <algorithm>
#include <map>

namespace quoril::test {

using namespace Qt::StringLiterals;

/// Works on the bytes of a file that it keeps alive.
class FakeFile : public QBuffer
{
public:
    FakeFile(FakeCalls& calls, std::shared_ptr<QByteArray> content, qint64 failsAt)
        : QBuffer(content.get())
        , m_content(std::move(content))
        , m_failsAt(failsAt)
        , m_mark(calls)
    {
        open(QIODevice::ReadOnly);
    }
    ~FakeFile() override { close(); }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        if (m_failsAt >= 0)
            size = std::min(size, m_failsAt - pos());
        return m_failsAt >= 0 && size <= 0 ? -1 : QBuffer::readData(data, size);
    }

private:
    std::shared_ptr<QByteArray> m_content;
    qint64 m_failsAt;
    OpenMark m_mark;
};

/// Files by machine path, without regard to case and separator. Folders are not modelled but for the missing
/// ones. The drive lies in the host's folder "/machine".
class FakeFiles : public Files
{
public:
    explicit FakeFiles(FakeCalls& calls) : m_calls(calls) { }

    void put(QStringView path, const QByteArray& content)
    {
        m_files[normal(path)] = std::make_shared<QByteArray>(content);
    }
    /// Folders that can't be entered.
    void addMissingFolder(QStringView path) { m_missing.append(normal(path)); }

    QString currentDirectory;
    qint64 readsFailAt = -1; ///< in bytes from the begin of a file; -1 for nowhere
    QHash<QString, QString> fileVersions; ///< by machine path in lower case

    Result<std::unique_ptr<QIODevice>> openForReading(QStringView path) override
    {
        using Given = Result<std::unique_ptr<QIODevice>>;
        return m_calls.attempt<Given>({}, [&]() -> Given {
            const auto found = m_files.find(normal(path));
            if (found == m_files.end())
                return Error{error::FileNotFound, {}};
            return std::unique_ptr<QIODevice>(
                std::make_unique<FakeFile>(m_calls, found->second, readsFailAt));
        });
    }
    // Nobody above the platform writes into a machine's folders.
    Result<std::unique_ptr<QIODevice>> openForWriting(QStringView) override
    {
        return Error{error::AccessDenied, {}};
    }
    Status remove(QStringView path) override
    {
        return m_files.erase(normal(path)) ? Status() : Status(Error{error::FileNotFound, {}});
    }
    /// Patterns like "*.exe" only; the names come in lower case.
    Result<QStringList> find(QStringView pattern) override
    {
        return m_calls.attempt<Result<QStringList>>({}, [&] {
            const QString wanted = normal(pattern);
            const qsizetype star = wanted.indexOf(u'*');
            QStringList names;
            for (const auto& [path, content] : m_files) {
                if (path.startsWith(wanted.left(star)) && path.endsWith(wanted.mid(star + 1))
                    && path.indexOf(u'\\', star) < 0)
                    names.append(path.mid(star));
            }
            return names.isEmpty() ? Result<QStringList>(Error{error::FileNotFound, {}}) : names;
        });
    }
    Result<QString> fileVersion(QStringView path) override
    {
        return m_calls.attempt<Result<QString>>({}, [&]() -> Result<QString> {
            if (const auto found = fileVersions.constFind(normal(path)); found != fileVersions.cend())
                return *found;
            return Error{error::ResourceDataNotFound, {}};
        });
    }
    Status setCurrentDirectory(QStringView path) override
    {
        return m_calls.attempt<Status>(u"change directory "_s % path, [&]() -> Status {
            if (m_missing.contains(normal(path)))
                return Error{error::PathNotFound, {}};
            currentDirectory = path.toString();
            return {};
        });
    }
    Result<QString> hostPath(QStringView path) const override
    {
        if (!m_files.contains(normal(path)))
            return Error{error::FileNotFound, {}};
        return u"/machine"_s + path.mid(2).toString().replace(u'\\', u'/');
    }
    Result<QString> machinePath(const QString& hostPath) const override
    {
        if (!hostPath.startsWith(u"/machine/"))
            return Error{error::PathNotFound, {}};
        return u"C:"_s + hostPath.mid(8).replace(u'/', u'\\');
    }

private:
    static QString normal(QStringView path) { return path.toString().toLower().replace(u'/', u'\\'); }

    FakeCalls& m_calls;
    std::map<QString, std::shared_ptr<QByteArray>> m_files;
    QStringList m_missing;
};

} // namespace quoril::test
