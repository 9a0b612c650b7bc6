#include "export/xml_text.h"

#include "text/lines.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Whether \a character may stand in an XML document. Halves of a pair are judged as one by whoever encodes them.
bool isXmlCharacter(QChar character)
{
    const char16_t c = character.unicode();
    return c == u'\t' || c == u'\n' || c == u'\r' || (c >= 0x20 && c < 0xFFFE);
}

} // namespace

XmlText::XmlText(QLatin1StringView prefix) : m_prefix(prefix)
{
    m_text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
}

void XmlText::indent()
{
    m_text.append(static_cast<qsizetype>(2 * m_open.size()), ' ');
}

void XmlText::appendName(QLatin1StringView name)
{
    m_text.append(m_prefix.data(), m_prefix.size());
    m_text.append(name.data(), name.size());
}

void XmlText::appendEscaped(QStringView text, bool isAttribute)
{
    QString shown;
    shown.reserve(text.size());
    for (const QChar c : text) {
        if (c == u'&')
            shown += "&amp;"_L1;
        else if (c == u'<')
            shown += "&lt;"_L1;
        else if (c == u'>')
            shown += "&gt;"_L1;
        else if (c == u'"' && isAttribute)
            shown += "&quot;"_L1;
        else
            shown += isXmlCharacter(c) ? c : QChar(u' ');
    }
    m_text += shown.toUtf8();
}

void XmlText::open(QLatin1StringView name, Attributes attributes)
{
    indent();
    m_text += '<';
    appendName(name);
    for (const auto &[attribute, value] : attributes) {
        m_text += ' ';
        m_text.append(attribute.data(), attribute.size());
        m_text += "=\"";
        appendEscaped(value, true);
        m_text += '"';
    }
    m_text += ">\n";
    m_open.push_back(name);
}

void XmlText::close()
{
    const QLatin1StringView name = m_open.back();
    m_open.pop_back();
    indent();
    m_text += "</";
    appendName(name);
    m_text += ">\n";
}

void XmlText::leaf(QLatin1StringView name, QStringView content)
{
    indent();
    m_text += '<';
    appendName(name);
    m_text += '>';
    appendEscaped(content, false);
    m_text += "</";
    appendName(name);
    m_text += ">\n";
}

void XmlText::leaf(QLatin1StringView name, QLatin1StringView content)
{
    leaf(name, QStringView(QString(content)));
}

void XmlText::leaf(QLatin1StringView name, qint64 number)
{
    leaf(name, QStringView(QString::number(number)));
}

void XmlText::hexLeaf(QLatin1StringView name, quint32 number)
{
    leaf(name, QStringView("0x"_L1 + hexDigits(number)));
}

void XmlText::leafIfAny(QLatin1StringView name, QStringView content)
{
    if (!content.isEmpty())
        leaf(name, content);
}

void XmlText::rawLine(QLatin1StringView text)
{
    indent();
    m_text.append(text.data(), text.size());
    m_text += '\n';
}

} // namespace veldmap
