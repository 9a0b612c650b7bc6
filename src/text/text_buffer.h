#pragma once

#include <QString>
#include <QVarLengthArray>

namespace veldmap {

/// A text under construction. While it is short it takes no memory of its own, and what is made of it has no spare
/// room.
class TextBuffer {
public:
    bool isEmpty() const { return m_text.isEmpty(); }
    void append(char16_t character) { m_text.append(character); }
    void append(QStringView text) { m_text.append(text.utf16(), text.size()); }
    void append(QLatin1StringView text)
    {
        for (const char c : text)
            m_text.append(static_cast<unsigned char>(c));
    }

    QString text() const { return QString(reinterpret_cast<const QChar *>(m_text.constData()), m_text.size()); }

private:
    QVarLengthArray<char16_t, 512> m_text;
};

} // namespace veldmap
