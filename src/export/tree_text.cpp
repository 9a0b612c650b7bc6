#include "export/tree_text.h"

#include "findings/limits.h"
#include "model/memory_map.h"
#include "model/visit.h"
#include "text/lines.h"
#include "text/text_sink.h"

using namespace Qt::StringLiterals;

// The tree as an engineer reads it:
//
//     chip soc
//       file periph/uart.xml: UART
//         UART_NB_CHAN = 2
//         type uart, 20 bytes
//       UART0                             0x40034000 uart, 20 bytes
//         ctrl                            0x40034000 Reg32 rw, 4 bytes
//           speed                         3:1        rw reset 0

namespace veldmap {

namespace {

constexpr int kPlaceColumn = 40;
constexpr int kTypeColumn = 51;
constexpr int kNoteColumn = 74;

QString margin(int level)
{
    return QString(2 * level, u' ');
}

QString positionOf(const VMBitField &field)
{
    const QString down = QString::number(field.downPos);
    return field.upPos == field.downPos ? down : QString::number(field.upPos) + u':' + down;
}

QString counted(int count, QLatin1StringView noun)
{
    return QString::number(count) + u' ' + noun + (count == 1 ? u""_s : u"s"_s);
}

QString typeOf(const VMXMLElement &element)
{
    QString words = element.getTypeString();
    if (words.isEmpty() && element.isStruct())
        words = u"struct"_s;
    if (const auto *valuable = elementCast<VMValuable>(&element))
        words += u' ' + valuable->getProtectString();
    if (!words.isEmpty())
        words += ", "_L1;
    return words + counted(element.sizeOf(), "byte"_L1);
}

/// A line up to the type, and the note in its column behind it.
void appendNoted(QString &text, const QString &line, const QString &note)
{
    if (note.isEmpty())
        appendLine(text, line);
    else
        appendLine(text, line, Column{kNoteColumn}, note);
}

void appendVariable(const VMIntVar &variable, int level, QString &text)
{
    const QString right = variable.isRange ? " .. "_L1 + QString::number(variable.rightValue) : QString();
    const bool isPlain = variable.leftExpression == QString::number(variable.leftValue);
    text += lineOf(margin(level), variable.name, " = "_L1, variable.leftValue, right,
                   isPlain || variable.isRange ? QString() : " ("_L1 + variable.leftExpression + u')');
}

void appendArchive(const VMXMLArchive &archive, QString &text)
{
    text += lineOf(margin(1), "file "_L1, archive.relativeFileName, archive.archiveComment.isEmpty() ? ""_L1 : ": "_L1,
                   archive.archiveComment);
    for (const VMIntVar &variable : *archive.variables) {
        if (!variable.leftExpression.isEmpty())
            appendVariable(variable, 2, text);
    }
    for (const auto &element : archive.templates)
        text += lineOf(margin(2), "type "_L1, element->typedefName, ", "_L1, element->sizeOf(), " bytes"_L1);
}

/// Lines under construction, and who takes them. Without a sink they stay here.
class Lines {
public:
    explicit Lines(QString &text, TextSink *sink = nullptr) : m_text(text), m_sink(sink) {}

    QString &text() { return m_text; }
    /// Whether nobody wants more.
    bool isEnded()
    {
        if (m_sink && m_text.size() >= limits::kPieceOfText)
            give();
        return m_isEnded;
    }
    /// Gives the sink what it does not have yet; whether it has taken all.
    bool giveRest()
    {
        give();
        return !m_isEnded;
    }

private:
    void give()
    {
        m_isEnded = m_isEnded || !m_sink->take(m_text.toUtf8());
        m_text.truncate(0);
    }

    QString &m_text;
    TextSink *m_sink;
    bool m_isEnded = false;
};

void appendLines(Lines &lines, const VMXMLElement &element, const QString &name, int level, int depth,
                 const ElementNotes &notes)
{
    if (lines.isEnded())
        return;
    QString line;
    appendLine(line, margin(level), name, Column{kPlaceColumn}, element.getAddressString(), Column{kTypeColumn},
               typeOf(element));
    line.chop(1);
    appendNoted(lines.text(), line, notes.ofElement(element));
    if (depth <= 0)
        return;
    const auto appendMembers = [&](const auto &members) {
        for (const auto &member : members)
            appendLines(lines, *member, member->getName(), level + 1, depth - 1, notes);
    };
    visit(element, Overloads{
                       [&](const VMValuable &valuable) {
                           for (const auto &field : valuable.bitFields)
                               appendField(lines.text(), *field, level + 1, notes);
                       },
                       [&](const VMStruct &structure) { appendMembers(structure.memberList); },
                       [&](const VMArray &array) { appendMembers(array.memberList); },
                       [](const VMXMLElement &) {},
                   });
}

void appendRoot(const VMRootArchive *root, QLatin1StringView word, Lines &lines)
{
    if (!root)
        return;
    lines.text() += lineOf(word, u" ", root->getName());
    for (const VMXMLArchive *archive : root->xmlArchives) {
        if (!lines.isEnded())
            appendArchive(*archive, lines.text());
    }
    for (const auto &instance : root->instances)
        appendLines(lines, *instance, instance->getName(), 1, kAllLevels, OptionNotes());
}

} // namespace

QString OptionNotes::ofElement(const VMXMLElement &) const
{
    return {};
}

QString OptionNotes::ofField(const VMBitField &field) const
{
    QStringList options;
    for (const VMBitFieldOption &option : field.options.optionList)
        options += option.name + u'=' + QString::number(option.value);
    return options.join(u' ');
}

void appendField(QString &text, const VMBitField &field, int level, const ElementNotes &notes)
{
    QString line;
    appendLine(line, margin(level), field.getName(), Column{kPlaceColumn}, positionOf(field), Column{kTypeColumn},
               field.getAccessString(), " reset "_L1, field.getResetString(DISPLAY_DEFAULT));
    line.chop(1);
    appendNoted(text, line, notes.ofField(field));
}

void appendFieldAlone(QString &text, const VMBitField &field, const ElementNotes &notes)
{
    QString line;
    appendLine(line, field.getPath(), Column{kPlaceColumn}, field.getAddressString(), Column{kTypeColumn},
               positionOf(field), u" ", field.getAccessString(), u", ", counted(field.getBitSize(), "bit"_L1),
               ", reset "_L1, field.getResetString(DISPLAY_DEFAULT));
    line.chop(1);
    appendNoted(text, line, notes.ofField(field));
}

void appendElement(QString &text, const VMXMLElement &element, const QString &name, int level, int depth,
                   const ElementNotes &notes)
{
    Lines lines(text);
    appendLines(lines, element, name, level, depth, notes);
}

bool writeTreeText(const VMMemoryMap &map, TextSink &sink)
{
    QString text;
    Lines lines(text, &sink);
    for (const VMIntVar &variable : *map.globalVariables)
        appendVariable(variable, 0, text);
    appendRoot(map.chipRootArchive, "chip"_L1, lines);
    appendRoot(map.softRootArchive, "soft"_L1, lines);
    return lines.giveRest();
}

} // namespace veldmap
