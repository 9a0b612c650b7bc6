#pragma once

#include <QByteArray>
#include <QLatin1StringView>
#include <QStringView>

#include <initializer_list>
#include <utility>
#include <vector>

namespace veldmap {

/// An XML document under construction, in UTF-8, one tag a line.
class XmlText {
public:
    using Attributes = std::initializer_list<std::pair<QLatin1StringView, QStringView>>;

    /// Begins a document whose tags all have \a prefix in front of their names.
    explicit XmlText(QLatin1StringView prefix = {});

    void open(QLatin1StringView name, Attributes attributes = {});
    /// Ends the tag that was opened last.
    void close();
    /// A tag that holds \a content.
    void leaf(QLatin1StringView name, QStringView content);
    void leaf(QLatin1StringView name, QLatin1StringView content);
    void leaf(QLatin1StringView name, qint64 number);
    /// The number as "0x" and upper-case hexadecimal digits.
    void hexLeaf(QLatin1StringView name, quint32 number);
    /// The same, but nothing where there is no content.
    void leafIfAny(QLatin1StringView name, QStringView content);
    /// \a text as it stands, in a line of its own.
    void rawLine(QLatin1StringView text);

    QByteArray takeText() { return std::move(m_text); }

private:
    void indent();
    void appendName(QLatin1StringView name);
    void appendEscaped(QStringView text, bool isAttribute);

    QByteArray m_text;
    QLatin1StringView m_prefix;
    std::vector<QLatin1StringView> m_open;
};

} // namespace veldmap
