#include "target/image.h"

#include "files/file_rules.h"
#include "files/file_writer.h"
#include "findings/finding.h"
#include "model/visit.h"
#include "target/target_rules.h"
#include "text/lines.h"

#include <QFile>
#include <QFileInfo>
#include <QList>

#include <algorithm>
#include <cstring>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr qint64 kAddressSpace = Q_INT64_C(1) << 32; // bytes

/// Reads all values of an element and of what it holds.
struct ValueReader {
    const TargetImage &image;

    void operator()(VMValuable &valuable) const { image.read(valuable); }
    void operator()(VMStruct &structure) const { readMembers(structure.memberList); }
    void operator()(VMArray &array) const { readMembers(array.memberList); }
    void operator()(VMXMLElement &) const {}

    template <typename Members>
    void readMembers(Members &members) const
    {
        for (auto &member : members)
            visit(*member, *this);
    }
};

} // namespace

TargetImage::TargetImage(const QString &path, quint32 address, QByteArray bytes)
    : m_path(path), m_address(address), m_bytes(std::move(bytes))
{
}

std::optional<TargetImage> TargetImage::open(const QString &path, quint32 address, Sink &sink)
{
    QFile file(path);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    if (file.error() != QFile::NoError) {
        sink.take(Finding(target_rules::kUnreadable, {}, {path, file.errorString()}));
        return std::nullopt;
    }
    return TargetImage(path, address, std::move(bytes));
}

qint64 TargetImage::end() const
{
    return qMin(m_address + m_bytes.size(), kAddressSpace);
}

bool TargetImage::holds(quint32 address, qint64 size) const
{
    return address >= m_address && size >= 0 && address + size <= end();
}

bool TargetImage::holds(const VMXMLElement &element) const
{
    return holds(element.getBaseAddress(), element.sizeOf());
}

bool TargetImage::read(quint32 address, std::span<std::byte> bytes) const
{
    if (!holds(address, std::ssize(bytes)))
        return false;
    std::memcpy(bytes.data(), m_bytes.constData() + (address - m_address), bytes.size());
    return true;
}

bool TargetImage::write(quint32 address, std::span<const std::byte> bytes)
{
    if (!holds(address, std::ssize(bytes)))
        return false;
    std::memcpy(m_bytes.data() + (address - m_address), bytes.data(), bytes.size());
    return true;
}

bool TargetImage::read(VMValuable &valuable) const
{
    const bool isHeld = holds(valuable);
    valuable.setReadError(!isHeld);
    if (isHeld) {
        QByteArray bytes = m_bytes.sliced(valuable.getBaseAddress() - m_address, valuable.sizeOf());
        valuable.memSet(reinterpret_cast<unsigned char *>(bytes.data()));
    }
    return isHeld;
}

void TargetImage::readAll(VMXMLElement &element) const
{
    VMXMLElement &holder = elementCast<VMBitField>(&element) ? *element.parent : element;
    if (followPointersTo(holder))
        visit(holder, ValueReader{*this});
    else
        holder.setReadError(true);
}

void TargetImage::write(const VMValuable &valuable)
{
    valuable.memGet(reinterpret_cast<unsigned char *>(m_bytes.data()) + (valuable.getBaseAddress() - m_address));
}

bool TargetImage::followPointersTo(const VMXMLElement &element) const
{
    QList<VMPointer *> pointers; // the innermost first
    for (VMXMLElement *holder = element.parent; holder; holder = holder->parent) {
        if (auto *pointer = elementCast<VMPointer>(holder))
            pointers += pointer;
    }
    return std::all_of(pointers.rbegin(), pointers.rend(), [this](VMPointer *pointer) { return read(*pointer); });
}

bool TargetImage::save(Sink &sink) const
{
    removeLeftovers(QFileInfo(m_path).path());
    const WriteResult result = writeWholeFile(m_path, m_bytes);
    if (result.outcome == WriteResult::InPlace)
        sink.take(Finding(file_rules::kInPlace, {}, {m_path, result.reason}));
    if (result.outcome == WriteResult::Failed)
        sink.take(Finding(target_rules::kUnwritable, {}, {m_path, result.reason}));
    return result.outcome != WriteResult::Failed;
}

QString TargetImage::description() const
{
    return u"%1, which has %2 bytes from 0x%3 on"_s.arg(m_path, QString::number(m_bytes.size()), hex8(m_address));
}

} // namespace veldmap
