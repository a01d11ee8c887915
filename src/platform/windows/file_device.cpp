#include "platform/windows/file_device.h"

#include <algorithm>

namespace quoril {

namespace {

constexpr qint64 MostBytesOfOneCall = 1 << 30;

} // namespace

FileDevice::FileDevice(KernelHandle file, OpenMode mode) : m_file(std::move(file))
{
    QIODevice::open(mode);
}

FileDevice::~FileDevice() = default;

qint64 FileDevice::size() const
{
    LARGE_INTEGER size = {};
    return ::GetFileSizeEx(m_file.get(), &size) ? size.QuadPart : 0;
}

bool FileDevice::seek(qint64 position)
{
    LARGE_INTEGER wanted = {};
    wanted.QuadPart = position;
    return QIODevice::seek(position) && ::SetFilePointerEx(m_file.get(), wanted, nullptr, FILE_BEGIN);
}

void FileDevice::close()
{
    QIODevice::close();
    m_file.reset();
}

qint64 FileDevice::readData(char* data, qint64 limit)
{
    DWORD read = 0;
    if (!::ReadFile(
            m_file.get(), data, static_cast<DWORD>(std::min(limit, MostBytesOfOneCall)), &read, nullptr)) {
        setErrorString(qt_error_string(static_cast<int>(::GetLastError())));
        return -1;
    }
    return read;
}

qint64 FileDevice::writeData(const char* data, qint64 size)
{
    for (qint64 done = 0; done < size;) {
        DWORD written = 0;
        const auto part = static_cast<DWORD>(std::min(size - done, MostBytesOfOneCall));
        if (!::WriteFile(m_file.get(), data + done, part, &written, nullptr)) {
            setErrorString(qt_error_string(static_cast<int>(::GetLastError())));
            return done > 0 ? done : -1;
        }
        done += written;
    }
    return size;
}

} // namespace quoril
