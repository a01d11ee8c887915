#pragma once

#include "platform/windows/win32.h"

#include <QIODevice>

namespace quoril {

/// An open file as a device. Its size is asked anew at each call, so that what others append is seen, and
/// what is written to it is written at once.
class FileDevice : public QIODevice
{
public:
    /// Opens the device for reading or for writing.
    FileDevice(KernelHandle file, OpenMode mode);
    ~FileDevice() override;

    qint64 size() const override;
    bool seek(qint64 position) override;
    void close() override;

protected:
    qint64 readData(char* data, qint64 limit) override;
    qint64 writeData(const char* data, qint64 size) override;

private:
    KernelHandle m_file;
};

} // namespace quoril
