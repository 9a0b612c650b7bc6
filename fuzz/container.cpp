// Reads any bytes as a container, and seals any bytes and takes them out again.

#include "container/container.h"
#include "loading/document.h"

#include <QDomDocument>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>

namespace {

void write(const QString &path, const QByteArray &bytes)
{
    std::ofstream(path.toStdString(), std::ios::binary).write(bytes.constData(), bytes.size());
}

bool isRead(const QString &path, bool &encrypted)
{
    QDomDocument document;
    return loadXMLDocument(path, document, encrypted, nullptr, nullptr, nullptr, true) == XMDOpenSuccess;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("soc.xmd"));
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    bool encrypted = false;
    write(path, "EXML" + bytes);
    isRead(path, encrypted);
    write(path, bytes);
    const bool wasRead = isRead(path, encrypted);

    const QString sealed = directory.filePath(QStringLiteral("sealed.xmd"));
    if (!encryptXMLDocument(path, sealed, nullptr, nullptr, nullptr))
        std::abort();
    // A plain document is read from a container as it is read by itself; a container in a container is no document.
    const bool isExpected = wasRead && !bytes.startsWith("EXML");
    if (isRead(sealed, encrypted) != isExpected || encrypted != isExpected)
        std::abort();
    return 0;
}
