#include "report/log_sections.h"

#include "logs/app_event_log.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/machine_path.h"
#include "report/attachment_file.h"
#include "report/report_stream.h"
#include "report/unit_reader.h"

#include <algorithm>
#include <optional>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView LogSetting = u"set session log";

/// The units of a device one by one.
class Scanner
{
public:
    explicit Scanner(QIODevice& device) : m_reader(device) { }

    /// The unit at the present place; none at the end.
    std::optional<QChar> peek()
    {
        if (m_place == m_piece.size()) {
            m_piece = m_reader.next();
            m_place = 0;
        }
        return m_piece.isEmpty() ? std::nullopt : std::optional(m_piece[m_place]);
    }
    bool accept(QChar wanted)
    {
        if (peek() != wanted)
            return false;
        ++m_place;
        return true;
    }
    bool acceptAll(QStringView wanted)
    {
        return std::all_of(wanted.begin(), wanted.end(), [this](QChar unit) { return accept(unit); });
    }
    void skipBlanks()
    {
        while (accept(u' ') || accept(u'\t')) { }
    }
    /// Goes past the next line feed. False if there is none.
    bool nextLine()
    {
        while (peek()) {
            if (accept(u'\n'))
                return true;
            ++m_place;
        }
        return false;
    }
    QString quotedText()
    {
        QString text;
        for (auto unit = peek(); unit && *unit != u'"' && *unit != u'\r' && *unit != u'\n'; unit = peek()) {
            text += *unit;
            ++m_place;
        }
        return text;
    }

private:
    UnitReader m_reader;
    QStringView m_piece;
    qsizetype m_place = 0;
};

} // namespace

bool WriteEventLog(ReportStream& out, QStringView log, qint64 from, qint64 to)
{
    return walkEventLines(log, from, to, [&out](quint16, quint32, qint64, QStringView text) {
        out.write(text);
        out.write(LineEnd);
    });
}

void writeEmulatorLog(ReportStream& out, const QString& path)
{
    out.write(u"-------------------- LOG --------------------\r\n");
    bool isRead = false;
    if (const auto file = machine().files().openForReading(path)) {
        isRead = out.writeAll(**file);
    }
    if (!isRead)
        out.write(u"Can't open QUORIL log file: \""_s + path + u"\"\r\n"_s);
    out.write(u"-------------------- End of the LOG --------------------\r\n");
}

QString findLogName(QIODevice& configuration)
{
    Scanner text(configuration);
    while (!text.acceptAll(LogSetting)) {
        if (!text.nextLine())
            return {};
    }
    text.skipBlanks();
    if (!text.accept(u'='))
        return {};
    text.skipBlanks();
    return text.accept(u'"') ? text.quotedText() : QString();
}

QString resolveLogName(const QString& logName, const QString& configurationName)
{
    if (!driveOf(logName).isEmpty())
        return logName;
    const QStringView base
        = directoryOf(logName).isEmpty() ? folderOf(configurationName) : driveOf(configurationName);
    return base.toString() + logName;
}

} // namespace quoril
