#pragma once

#include <QString>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace veldmap {

/// A text under construction. While it is short it takes no memory of its own, and what is made of it has no spare
/// room.
class TextBuffer {
public:
    TextBuffer() = default;
    TextBuffer(const TextBuffer &) = delete;
    TextBuffer &operator=(const TextBuffer &) = delete;

    bool isEmpty() const { return m_size == 0; }
    qsizetype size() const { return m_size; }
    void append(char16_t character) { *extended(1) = character; }
    void append(QStringView text) { std::copy_n(text.utf16(), text.size(), extended(text.size())); }
    void append(QLatin1StringView text)
    {
        std::transform(text.begin(), text.end(), extended(text.size()),
                       [](char c) { return static_cast<unsigned char>(c); });
    }
    void appendBlanks(qsizetype count) { std::fill_n(extended(count), count, u' '); }

    QStringView view() const { return {m_begin, m_size}; }
    QString text() const { return view().toString(); }

private:
    /// Where \a count characters more are to be put.
    char16_t *extended(qsizetype count)
    {
        if (m_capacity - m_size < count)
            grow(count);
        m_size += count;
        return m_begin + m_size - count;
    }
    void grow(qsizetype count)
    {
        m_capacity = std::max(2 * m_capacity, m_size + count);
        auto larger = std::make_unique_for_overwrite<char16_t[]>(static_cast<std::size_t>(m_capacity));
        std::copy_n(m_begin, m_size, larger.get());
        m_long = std::move(larger);
        m_begin = m_long.get();
    }

    char16_t m_short[256]; // longer than nearly every line
    std::unique_ptr<char16_t[]> m_long;
    char16_t *m_begin = m_short;
    qsizetype m_size = 0;
    qsizetype m_capacity = std::size(m_short);
};

} // namespace veldmap
