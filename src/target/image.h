#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <optional>
#include <span>

class VMValuable;
class VMXMLElement;

namespace veldmap {

class Sink;

/// The bytes of a file, as the target's memory from an address on. What lies beyond the 32-bit address space is never
/// reached. Values are stored in the tree; the file changes with save() alone.
class VELDMAP_EXPORT TargetImage {
public:
    /// The image in the file \a path. Nothing when it can't be read; \a sink then hears why.
    static std::optional<TargetImage> open(const QString &path, quint32 address, Sink &sink);

    /// The addresses of its first byte and behind its last one.
    quint32 begin() const { return m_address; }
    qint64 end() const;

    /// Copies the bytes from \a address on to or from \a bytes; false when they do not all lie in the image.
    [[nodiscard]] bool read(quint32 address, std::span<std::byte> bytes) const;
    [[nodiscard]] bool write(quint32 address, std::span<const std::byte> bytes);

    /// Whether all bytes of \a element lie in the image.
    bool holds(const VMXMLElement &element) const;
    /// Takes the value of \a valuable from the image. False, and its read error set, when it does not lie there whole.
    bool read(VMValuable &valuable) const;
    /// Takes the values of \a element and of all that it holds, behind the pointers that lead to it. What does not lie
    /// in the image has a read error afterwards; all has one when a pointer on the way does not lie there.
    void readAll(VMXMLElement &element) const;
    /// Puts the value of \a valuable, which the image holds, into it.
    void write(const VMValuable &valuable);
    /// Reads the pointers by which \a element is reached, the outermost first, so that it gets its address. False when
    /// one of them does not lie in the image: nobody knows then where the element is.
    bool followPointersTo(const VMXMLElement &element) const;
    /// Puts the bytes in the place of the file in one step. False when that is not possible; \a sink then hears why.
    [[nodiscard]] bool save(Sink &sink) const;

    /// The image as messages name it: its file and addresses.
    QString description() const;

private:
    TargetImage(const QString &path, quint32 address, QByteArray bytes);

    bool holds(quint32 address, qint64 size) const;

    QString m_path;
    quint32 m_address;
    QByteArray m_bytes;
};

} // namespace veldmap
