#pragma once

#include <QByteArray>
#include <QString>

#include <utility>

namespace veldmap {

/// JSON under construction, in UTF-8 and without blanks. What is written where is the caller's to know: each key is
/// followed by a value, objects and lists are closed in the order in which they were opened.
class JsonText {
public:
    /// Begins a member of the open object, whose value follows.
    JsonText &key(QLatin1StringView name)
    {
        separate();
        appendQuoted(name);
        m_text += ':';
        m_isFirst = true; // its value needs no comma
        return *this;
    }
    void text(QStringView value)
    {
        separate();
        appendQuoted(value);
    }
    void textOrNull(QStringView value)
    {
        if (value.isEmpty())
            null();
        else
            text(value);
    }
    void number(qint64 value)
    {
        separate();
        m_text += QByteArray::number(value);
    }
    /// A value that was made already.
    void raw(const QByteArray &json)
    {
        separate();
        m_text += json;
    }
    void null()
    {
        separate();
        m_text += "null";
    }
    /// Opens an object or a list: '{' or '['.
    void open(char bracket)
    {
        separate();
        m_text += bracket;
        m_isFirst = true;
    }
    /// Closes it with '}' or ']'.
    void close(char bracket)
    {
        m_text += bracket;
        m_isFirst = false;
    }
    /// Begins a line, in front of the next item of the open list or behind its last.
    void breakLine()
    {
        if (!m_isFirst)
            m_text += ',';
        m_text += '\n';
        m_isFirst = true;
    }

    QByteArray takeText() { return std::move(m_text); }

private:
    void separate()
    {
        if (!std::exchange(m_isFirst, false))
            m_text += ',';
    }
    void appendQuoted(QLatin1StringView word)
    {
        m_text += '"';
        m_text.append(word.data(), word.size());
        m_text += '"';
    }
    void appendQuoted(QStringView text);

    QByteArray m_text;
    bool m_isFirst = true;
};

} // namespace veldmap
