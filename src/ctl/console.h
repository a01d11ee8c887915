#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <cstdio>
#include <mutex>

namespace quoril {

/// How a line of output is coloured on a terminal.
enum class LineStyle
{
    Plain,
    Heading,
    Marker,
    Warning,
    Error
};

/// The three streams of a command-line program. Results go to the output, in UTF-8 and buffered; whatever is
/// reported or asked goes to the error stream, from any thread. What a terminal gets is made harmless with
/// terminalText(); a file or a pipe gets it unchanged.
class Console
{
public:
    struct Facts
    {
        bool inputIsTerminal = false;
        bool outputIsTerminal = false;
        bool errorIsTerminal = false;
        bool coloured = false; ///< colours on those that are terminals
    };

    /// Prepares the standard streams, and finds out what they are. NO_COLOR in the environment takes the
    /// colours away.
    static Facts prepareStandard();

    /// The streams are not owned and live longer.
    Console(std::FILE* input, std::FILE* output, std::FILE* errors, Facts facts);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    const Facts& facts() const { return m_facts; }

    /// Puts one line of a result out.
    void line(QStringView text, LineStyle style = LineStyle::Plain);
    /// The same for lines of program text, such as help, whose line ends are kept.
    void lines(QStringView text);
    /// The same for a text in UTF-8.
    void utf8Line(const QByteArray& text, LineStyle style = LineStyle::Plain);
    /// Passes bytes on as they are, to a terminal too.
    void bytes(const QByteArray& content);

    /// Puts one line to the error stream at once.
    void report(QStringView text, LineStyle style = LineStyle::Error);
    void reportLines(QStringView text);
    /// A line of progress on the error stream. On a terminal the next one takes its place, and an empty one
    /// takes it away.
    void progress(QStringView text);

    /// Whether a person can be asked: he types the input, and sees the errors or the output.
    bool canAsk() const
    {
        return m_facts.inputIsTerminal && (m_facts.errorIsTerminal || m_facts.outputIsTerminal);
    }
    /// A line that a question is about, where the question will stand.
    void subject(QStringView text);
    /// Puts the question and waits for the answer; true for one that begins with y. False where nobody can be
    /// asked.
    bool ask(QStringView question);

    /// Writes what is buffered. False if some of the output so far could not be written.
    bool flush();
    /// Whether that was because nobody reads it any more.
    bool isClosed() const { return m_isClosed; }

private:
    std::FILE* questionStream() const;
    void keepBufferSmall();
    void showProgress(const QString& shown);
    QByteArray bytesFor(QStringView text, bool terminal, LineStyle style) const;

    std::FILE* m_input;
    std::FILE* m_output;
    std::FILE* m_errors;
    Facts m_facts;
    QByteArray m_buffer;
    bool m_written = true;
    bool m_isClosed = false;
    std::mutex m_errorGuard; ///< of the error stream and what stands below
    qsizetype m_progressWidth = 0; ///< of the line of progress that stands on the terminal
};

} // namespace quoril
