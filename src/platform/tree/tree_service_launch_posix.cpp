#include "platform/tree/tree_service_host.h"

#include "platform/host/exit_code.h"
#include "platform/host/posix/host_error.h"
#include "platform/host/posix/host_process.h"
#include "platform/host/process_identity.h"
#include "platform/tree/tree_machine.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

// Longer than a host takes on a machine that is busy to the limit, and shorter than anybody waits for the
// lock that is held meanwhile.
constexpr int AnswerMilliseconds = 15000;

class Pipe
{
public:
    Pipe()
    {
        if (::pipe2(m_ends.data(), O_CLOEXEC) != 0)
            m_ends = {-1, -1};
    }
    ~Pipe()
    {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    bool isOpen() const { return m_ends[0] >= 0; }
    int writing() const { return m_ends[1]; }
    void closeWriting() { closeEnd(1); }

    /// All that is written until the other side closes its end or the time is up.
    QByteArray readAll(const QDeadlineTimer& until)
    {
        QByteArray all;
        pollfd end = {.fd = m_ends[0], .events = POLLIN, .revents = 0};
        std::array<char, 64> bytes;
        while (!until.hasExpired()) {
            const int ready = ::poll(&end, 1, static_cast<int>(until.remainingTime()) + 1);
            const ssize_t count = ready > 0 ? ::read(m_ends[0], bytes.data(), bytes.size()) : ready;
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                break;
            all.append(bytes.data(), count);
        }
        return all;
    }

private:
    void closeEnd(std::size_t end)
    {
        if (m_ends[end] >= 0)
            ::close(m_ends[end]);
        m_ends[end] = -1;
    }

    std::array<int, 2> m_ends = {-1, -1};
};

QString hostProgram()
{
    const auto self = ProcessIdentity::of(::getpid());
    const QString image = self ? QFile::decodeName(self->image) : QString();
    return QFileInfo(image).path() + u'/' + ServiceHostProgram.toString();
}

QList<QByteArray> ownEnvironment()
{
    QList<QByteArray> texts;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(ExitCodeVariable.toString());
    for (const QString& text : environment.toStringList())
        texts.append(QFile::encodeName(text));
    return texts;
}

} // namespace

Status launchServiceHost(TreeMachine& machine, QStringView service)
{
    const QString program = hostProgram();
    if (!QFileInfo(program).isFile())
        return Error{error::FileNotFound, program};
    Pipe answer;
    if (!answer.isOpen())
        return hostError(errno);
    HostCommand command;
    command.program = program;
    command.arguments = {
        QFile::encodeName(program), QFile::encodeName(machine.paths().root()), service.toString().toUtf8()};
    command.environment = ownEnvironment();
    command.folder = machine.paths().root();
    command.output = answer.writing();
    const Result<std::unique_ptr<HostProcess>> host = HostProcess::start(command);
    if (!host)
        return host.failure();
    answer.closeWriting();
    const QDeadlineTimer until(AnswerMilliseconds);
    const QString text = QString::fromUtf8(answer.readAll(until));
    // The process that was started here has handed its work to one of its own and ends.
    (*host)->wait(static_cast<quint32>(until.remainingTime()));
    bool isNumber = false;
    const quint32 number = text.section(u'\n', 0, 0).toUInt(&isNumber);
    if (!isNumber)
        return Error{error::ServiceRequestTimeout, program};
    return number == error::Success ? Status() : Error{number, text.section(u'\n', 1, 1)};
}

} // namespace quoril
