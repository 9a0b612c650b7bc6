#include "model/aggregates.h"
#include "model/archive.h"
#include "model/bitfield.h"
#include "model/root_archive.h"
#include "model/valuable.h"

#include <cstring>

// An image is the memory of an element: byte 0 stands for the element's own address, scalars lie in the byte order of
// this machine at any alignment. Bytes that no member covers stay as the caller had them.

namespace {

/// Calls \a operation on each member with \a buffer moved on to the member's place. Members that a gap of negative
/// size, or sizes beyond 32 bits, have put outside their holder take no part: the buffer ends with the holder.
template <typename Members, typename Byte, typename Operation>
void forEachMember(const VMXMLElement &holder, const Members &members, Byte *buffer, const Operation &operation)
{
    const qint64 size = holder.sizeOf();
    for (const auto &member : members) {
        const qint64 place = holder.offsetOf(member.get());
        if (place + qMax(member->sizeOf(), 0) <= size)
            operation(*member, buffer + place);
    }
}

template <typename Holder>
void setMembers(Holder &holder, unsigned char *image)
{
    forEachMember(holder, holder.memberList, image, [](auto &member, auto *place) { member.memSet(place); });
}

template <typename Holder>
void getMembers(const Holder &holder, unsigned char *image)
{
    forEachMember(holder, holder.memberList, image, [](const auto &member, auto *place) { member.memGet(place); });
}

template <typename Holder>
void maskMembers(const Holder &holder, unsigned char *mask)
{
    forEachMember(holder, holder.memberList, mask, [](const auto &member, auto *place) { member.getReadMask(place); });
}

template <typename Word>
unsigned int readWord(const unsigned char *image)
{
    Word word;
    std::memcpy(&word, image, sizeof(word));
    return word;
}

/// Writes the low \a bits of \a value; a valuable of another width than 8, 16 or 32 bits is left alone.
void writeWord(unsigned char *image, unsigned int value, int bits)
{
    const auto write = [image](auto word) { std::memcpy(image, &word, sizeof(word)); };
    if (bits == 32)
        write(static_cast<std::uint32_t>(value));
    else if (bits == 16)
        write(static_cast<std::uint16_t>(value));
    else if (bits == 8)
        write(static_cast<std::uint8_t>(value));
}

void fill(unsigned char *buffer, int size, unsigned char byte)
{
    if (size > 0)
        std::memset(buffer, byte, static_cast<std::size_t>(size));
}

} // namespace

void VMValuable::memSet(unsigned char *image)
{
    switch (getBitSize()) {
    case 32:
        setValue(readWord<std::uint32_t>(image));
        break;
    case 16:
        setValue(readWord<std::uint16_t>(image));
        break;
    case 8:
        setValue(readWord<std::uint8_t>(image));
        break;
    }
}

void VMValuable::memGet(unsigned char *image) const
{
    writeWord(image, getValue(), getBitSize());
}

void VMValuable::getReadMask(unsigned char *mask) const
{
    writeWord(mask, readable ? 0xFFFFFFFFu : 0u, getBitSize());
}

void VMStruct::memSet(unsigned char *image)
{
    setMembers(*this, image);
}

void VMStruct::memGet(unsigned char *image) const
{
    getMembers(*this, image);
}

void VMStruct::getReadMask(unsigned char *mask) const
{
    maskMembers(*this, mask);
}

void VMArray::memSet(unsigned char *image)
{
    setMembers(*this, image);
}

void VMArray::memGet(unsigned char *image) const
{
    getMembers(*this, image);
}

void VMArray::getReadMask(unsigned char *mask) const
{
    maskMembers(*this, mask);
}

void VMHole::memSet(unsigned char *) {}

void VMHole::memGet(unsigned char *image) const
{
    fill(image, sizeOf(), 0xFF);
}

void VMHole::getReadMask(unsigned char *mask) const
{
    fill(mask, sizeOf(), 0);
}

void VMMemory::memSet(unsigned char *) {}

void VMMemory::memGet(unsigned char *) const {}

void VMMemory::getReadMask(unsigned char *mask) const
{
    fill(mask, sizeOf(), 0);
}

// The bits of a field lie in its valuable; archives take no place in memory.

void VMBitField::memSet(unsigned char *) {}

void VMBitField::memGet(unsigned char *) const {}

void VMBitField::getReadMask(unsigned char *) const {}

void VMXMLArchive::memSet(unsigned char *) {}

void VMXMLArchive::memGet(unsigned char *) const {}

void VMXMLArchive::getReadMask(unsigned char *) const {}

void VMRootArchive::memSet(unsigned char *) {}

void VMRootArchive::memGet(unsigned char *) const {}

void VMRootArchive::getReadMask(unsigned char *) const {}
