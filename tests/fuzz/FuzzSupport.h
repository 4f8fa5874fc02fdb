#pragma once
// What the fuzz targets share: a quiet log, and the input as an in-memory device.
//
// The scanners end the program through qFatal where they can't go on. A target
// never lets an input reach those messages unnoticed: it asks the same static
// checks the constructors use (canOpen) before it builds a scanner, so a fatal
// message that still comes is a finding, and aborts as the default handler does.
#include "scan/device/DeviceHandle.h"
#include "scan/device/MemorySource.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace fuzz {
inline void quietHandler(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type != QtFatalMsg)
        return;
    std::fprintf(stderr, "fatal: %s\n", message.toLocal8Bit().constData());
    std::abort();
}

// Installs the handler once per process; call at the top of every input.
inline void init()
{
    static const bool done = (qInstallMessageHandler(quietHandler), true);
    (void)done;
}

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
}

inline DeviceHandle device(const QByteArray& image)
{
    return DeviceHandle(std::make_shared<MemorySource>(image));
}
} // namespace fuzz
