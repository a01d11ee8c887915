#include "ctl/console.h"

#include "platform/terminal.h"
#include "platform/terminal_text.h"

#include <QList>

#include <array>
#include <cerrno>

namespace quoril {

namespace {

constexpr qsizetype BufferBytes = qsizetype{64} * 1024;
#ifdef Q_OS_WIN
constexpr bool OnWindows = true;
#else
constexpr bool OnWindows = false;
#endif

/// The terminal's code for a style.
const char* colourCode(LineStyle style)
{
    switch (style) {
    case LineStyle::Plain:
        break;
    case LineStyle::Heading:
        return "\x1b[1m";
    case LineStyle::Marker:
        return "\x1b[36m";
    case LineStyle::Warning:
        return "\x1b[33m";
    case LineStyle::Error:
        return "\x1b[31m";
    }
    return nullptr;
}

constexpr const char* ColourEnd = "\x1b[0m";

} // namespace

Console::Facts Console::prepareStandard()
{
    Facts facts;
    facts.inputIsTerminal = isTerminal(StandardStream::Input);
    facts.outputIsTerminal = isTerminal(StandardStream::Output);
    facts.errorIsTerminal = isTerminal(StandardStream::Error);
    facts.coloured = prepareStandardStreams() && qEnvironmentVariableIsEmpty("NO_COLOR");
    return facts;
}

Console::Console(std::FILE* input, std::FILE* output, std::FILE* errors, Facts facts)
    : m_input(input)
    , m_output(output)
    , m_errors(errors)
    , m_facts(facts)
{
}

Console::~Console()
{
    flush();
}

QByteArray Console::bytesFor(QStringView text, bool terminal, LineStyle style) const
{
    if (!terminal)
        return text.toUtf8() + '\n';
    const char* const colour = m_facts.coloured ? colourCode(style) : nullptr;
    const QByteArray harmless = terminalText(text).toUtf8();
    return colour ? colour + harmless + ColourEnd + '\n' : harmless + '\n';
}

void Console::line(QStringView text, LineStyle style)
{
    m_buffer += bytesFor(text, m_facts.outputIsTerminal, style);
    keepBufferSmall();
}

void Console::utf8Line(const QByteArray& text, LineStyle style)
{
    if (m_facts.outputIsTerminal)
        return line(QString::fromUtf8(text), style);
    m_buffer += text;
    m_buffer += '\n';
    keepBufferSmall();
}

void Console::lines(QStringView text)
{
    for (const QStringView each : text.split(u'\n'))
        line(each);
}

void Console::report(QStringView text, LineStyle style)
{
    const std::lock_guard lock(m_errorGuard);
    showProgress({});
    writeText(m_errors, bytesFor(text, m_facts.errorIsTerminal, style));
}

void Console::reportLines(QStringView text)
{
    for (const QStringView each : text.split(u'\n'))
        report(each, LineStyle::Plain);
}

void Console::progress(QStringView text)
{
    const std::lock_guard lock(m_errorGuard);
    if (m_facts.errorIsTerminal)
        showProgress(terminalText(text));
    else if (!text.isEmpty())
        writeText(m_errors, text.toUtf8() + '\n');
}

void Console::showProgress(const QString& shown)
{
    if (shown.isEmpty() && m_progressWidth == 0)
        return;
    writeText(m_errors, '\r' + shown.leftJustified(m_progressWidth).toUtf8() + '\r');
    m_progressWidth = shown.size();
}

std::FILE* Console::questionStream() const
{
    return m_facts.errorIsTerminal || !m_facts.outputIsTerminal ? m_errors : m_output;
}

void Console::subject(QStringView text)
{
    flush();
    writeText(questionStream(), bytesFor(text, canAsk(), LineStyle::Plain));
}

bool Console::ask(QStringView question)
{
    if (!canAsk())
        return false;
    flush();
    writeText(questionStream(), (terminalText(question) + QStringLiteral(" [y/N] ")).toUtf8());
    std::array<char, 256> answer{};
    const char* const read = std::fgets(answer.data(), int(answer.size()), m_input);
    return read && (*read == 'y' || *read == 'Y');
}

bool Console::flush()
{
    const bool isOut = writeText(m_output, m_buffer);
    // A pipe without a reader is reported as EINVAL on Windows.
    m_isClosed = m_isClosed || (!isOut && (errno == EPIPE || (OnWindows && errno == EINVAL)));
    m_written = isOut && m_written;
    m_buffer.resize(0);
    return m_written;
}

void Console::bytes(const QByteArray& content)
{
    m_buffer += content;
    keepBufferSmall();
}

void Console::keepBufferSmall()
{
    if (m_buffer.size() >= BufferBytes)
        flush();
}

} // namespace quoril
