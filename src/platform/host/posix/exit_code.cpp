#include "platform/host/exit_code.h"

#include <QByteArray>

#include <array>
#include <sys/mman.h>
#include <unistd.h>

namespace quoril {

namespace {

constexpr int StatusMask = 0xFF;
constexpr int StatusOfMinusOne = 255;
constexpr quint32 MinusOne = 0xFFFFFFFF;

} // namespace

void reportExitCode(quint32 code)
{
    if (qEnvironmentVariableIntValue(ExitCodeVariable.toLatin1().constData()) != ExitCodeDescriptor)
        return;
    const QByteArray text = QByteArray::number(code) + '\n';
    // What can't be passed on is left to the status.
    [[maybe_unused]] const auto written
        = ::write(ExitCodeDescriptor, text.constData(), static_cast<std::size_t>(text.size()));
}

quint32 exitCodeOf(int status, int file)
{
    std::array<char, 16> text = {};
    const auto size = file < 0 ? 0 : ::pread(file, text.data(), text.size(), 0);
    bool isNumber = false;
    const quint32 code
        = QByteArray(text.data(), static_cast<int>(qMax<ssize_t>(0, size))).trimmed().toUInt(&isNumber);
    if (isNumber && static_cast<int>(code & StatusMask) == status)
        return code;
    return status == StatusOfMinusOne ? MinusOne : static_cast<quint32>(status);
}

int makeExitCodeFile()
{
    return ::memfd_create("exit-code", MFD_CLOEXEC);
}

} // namespace quoril
