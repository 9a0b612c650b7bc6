#pragma once

#include "text/text_sink.h"

#include <QByteArray>

#include <utility>

namespace veldmap {

/// The bytes of a text under construction, with room for more behind them. A text that may become large is given to a
/// sink in pieces; where that takes no more, what is still written is dropped, and who writes may stop.
class TextBytes {
public:
    /// Uses the memory of \a buffer, whatever it holds.
    explicit TextBytes(QByteArray buffer) : m_bytes(std::move(buffer)) { m_bytes.resize(m_bytes.capacity()); }

    /// From now on gives \a sink what there is whenever it is about \a piece bytes.
    void giveTo(TextSink &sink, qsizetype piece)
    {
        m_sink = &sink;
        m_piece = piece;
    }
    /// Gives the sink what it does not have yet; whether it has taken all.
    bool giveRest()
    {
        give();
        return !m_isEnded;
    }
    /// Whether the sink takes no more.
    bool isEnded() const { return m_isEnded; }

    QByteArrayView view() const { return {m_bytes.constData(), m_size}; }
    /// The text, with the memory that it is in; nothing is left here.
    QByteArray takeBytes()
    {
        m_bytes.truncate(std::exchange(m_size, 0));
        return std::move(m_bytes);
    }

protected:
    /// The end of the text, with room for \a bytes behind it.
    char *roomFor(qsizetype bytes)
    {
        if (m_bytes.size() - m_size < bytes)
            makeRoom(bytes);
        return m_bytes.data() + m_size;
    }
    /// Takes what was written up to \a end into the text.
    void endAt(const char *end) { m_size = end - m_bytes.constData(); }

private:
    void makeRoom(qsizetype bytes);
    void give();

    QByteArray m_bytes; ///< with unused bytes behind the text
    qsizetype m_size = 0;
    TextSink *m_sink = nullptr;
    qsizetype m_piece = 0;
    bool m_isEnded = false;
};

} // namespace veldmap
