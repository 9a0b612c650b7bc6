#include "model/visit.h"

#include <cstring>

// An image is the memory of an element: byte 0 stands for the element's own address, scalars lie in the byte order of
// this machine at any alignment. Bytes that no member covers stay as the caller had them.

namespace {

/// Goes through what lies in an element and gives each valuable, gap and memory its bytes of the element's image.
///
/// The image ends with the element: sizeOf() bytes are all that its owner has promised. Gaps of negative size, sizes
/// beyond 32 bits and hosts that move members put some of them outside, where they take no part. It is the image's end
/// that counts: a member that has left its own structure, but lies in the image of the one that is served, has its
/// bytes there.
template <typename Byte, typename Serve>
class ImageWalk {
public:
    ImageWalk(Byte *image, const VMXMLElement &element, const Serve &serve)
        : m_image(image), m_size(element.sizeOf()), m_serve(serve)
    {
    }

    /// Serves \a element, which lies \a place bytes behind the begin of the image, in the wrapping arithmetic of
    /// addresses.
    template <typename Element>
    void walk(Element &element, quint32 place)
    {
        veldmap::visit(element, [&](auto &it) { walkInto<Element>(it, place); });
    }

private:
    template <typename Element, typename Kind>
    void walkInto(Kind &element, quint32 place)
    {
        if constexpr (std::is_base_of_v<VMStruct, Kind> || std::is_base_of_v<VMArray, Kind>) {
            for (const auto &member : element.memberList)
                walk(static_cast<Element &>(*member), place + element.offsetOf(member.get()));
        } else if (qint64(place) + qMax(element.sizeOf(), 0) <= m_size) {
            m_serve(element, m_image + place);
        }
    }

    Byte *m_image;
    qint64 m_size;
    const Serve &m_serve;
};

template <typename Element, typename Byte, typename Serve>
void serveImage(Element &element, Byte *image, const Serve &serve)
{
    ImageWalk(image, element, serve).walk(element, 0);
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

/// The value of a valuable comes from its bytes.
struct TakeValue {
    void operator()(VMValuable &valuable, const unsigned char *image) const
    {
        switch (valuable.getBitSize()) {
        case 32:
            valuable.setValue(readWord<std::uint32_t>(image));
            break;
        case 16:
            valuable.setValue(readWord<std::uint16_t>(image));
            break;
        case 8:
            valuable.setValue(readWord<std::uint8_t>(image));
            break;
        }
    }
    void operator()(VMXMLElement &, const unsigned char *) const {}
};

/// The bytes of a valuable become its value, those of a gap all ones. What a memory holds is not known.
struct GiveValue {
    void operator()(const VMValuable &valuable, unsigned char *image) const
    {
        writeWord(image, valuable.getValue(), valuable.getBitSize());
    }
    void operator()(const VMHole &hole, unsigned char *image) const { fill(image, hole.sizeOf(), 0xFF); }
    void operator()(const VMXMLElement &, unsigned char *) const {}
};

/// Gaps and memories can't be read.
struct GiveReadMask {
    void operator()(const VMValuable &valuable, unsigned char *mask) const
    {
        writeWord(mask, valuable.readable ? 0xFFFFFFFFu : 0u, valuable.getBitSize());
    }
    void operator()(const VMHole &hole, unsigned char *mask) const { fill(mask, hole.sizeOf(), 0); }
    void operator()(const VMMemory &memory, unsigned char *mask) const { fill(mask, memory.sizeOf(), 0); }
    void operator()(const VMXMLElement &, unsigned char *) const {}
};

} // namespace

void VMXMLElement::memSet(unsigned char *image)
{
    serveImage(*this, image, TakeValue());
}

void VMXMLElement::memGet(unsigned char *image) const
{
    serveImage(*this, image, GiveValue());
}

void VMXMLElement::getReadMask(unsigned char *mask) const
{
    serveImage(*this, mask, GiveReadMask());
}
