#include "model/element.h"

#include <array>
#include <cstddef>
#include <mutex>
#include <new>
#include <utility>

// A description of fifty thousand registers has half a million elements, all of a few sizes. In pieces of blocks they
// need no word in front of each and no room behind it, a twentieth of what they take. What is freed serves the next
// element of its size; blocks stay for the next load.

#if defined(__SANITIZE_ADDRESS__)
#define VELDMAP_EACH_ELEMENT_ALONE
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define VELDMAP_EACH_ELEMENT_ALONE
#endif
#endif

#ifdef VELDMAP_EACH_ELEMENT_ALONE

// So that a sanitizer sees who uses an element that is gone.

void *VMXMLElement::operator new(std::size_t size)
{
    return ::operator new(size);
}

void VMXMLElement::operator delete(void *element, std::size_t) noexcept
{
    ::operator delete(element);
}

#else

namespace {

constexpr std::size_t kUnit = 16; // sizes are multiples of it, as those of any allocation
constexpr std::size_t kLargest = 512;
constexpr std::size_t kBlock = 64 * 1024;

/// The pieces of one size.
class Pieces {
public:
    void *take(std::size_t size)
    {
        if (m_free)
            return std::exchange(m_free, m_free->next);
        if (static_cast<std::size_t>(m_end - m_begin) < size) {
            m_begin = static_cast<std::byte *>(::operator new(kBlock));
            m_end = m_begin + kBlock;
        }
        return std::exchange(m_begin, m_begin + size);
    }

    void giveBack(void *piece) { m_free = new (piece) Free{m_free}; }

private:
    struct Free {
        Free *next;
    };
    Free *m_free = nullptr;
    std::byte *m_begin = nullptr; // of what no element has had yet
    std::byte *m_end = nullptr;
};

// Neither has a destructor: elements of a host may outlive all else.
constinit std::mutex piecesMutex;
constinit std::array<Pieces, kLargest / kUnit> pieces;

/// \a size, which is above 0, in units.
std::size_t unitsOf(std::size_t size)
{
    return (size + kUnit - 1) / kUnit;
}

} // namespace

void *VMXMLElement::operator new(std::size_t size)
{
    if (size > kLargest)
        return ::operator new(size);
    const std::size_t units = unitsOf(size);
    const std::lock_guard lock(piecesMutex);
    return pieces[units - 1].take(units * kUnit);
}

void VMXMLElement::operator delete(void *element, std::size_t size) noexcept
{
    if (size > kLargest) {
        ::operator delete(element);
        return;
    }
    const std::lock_guard lock(piecesMutex);
    if (element)
        pieces[unitsOf(size) - 1].giveBack(element);
}

#endif
