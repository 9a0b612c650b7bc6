#include "docsite/site_text.h"
#include "model/visit.h"
#include "text/lines.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using veldmap::SiteText;

// The body of a page is one line: a heading bar for each element, with what it shows below, and a rule that closes it.
// For the register ctrl one step from the margin, with one comment and one field, broken here for reading:
//
//     <a name='00000010rrw'></a><table class='rh' style='margin-left:25px'><tr><td width=100%><b>ctrl</b></td>
//         <td align='right'><b>0x00000010</b></td></tr></table>                                      the heading
//     <br><table class='bf' style='margin-left:25px'><tr><td class='rc'>Control</td></tr></table><br/>   the comment
//     <table class='bf' style='margin-left:25px'><tr><td class='h'>7</td>...                         the bit diagram
//     <table class='bf' style='margin-left:25px'><tr><td class='bh'>Bitfield</td>...                 the fields
//     <hr class='re' style='margin-left:25px'/>                                                      the rule
//
// Comments and names go in as they stand in the tree, where they are markup already.

namespace {

constexpr int kLevelMargin = 25; // pixels
constexpr QLatin1StringView kCommentBox = "bf"_L1;

/// How the bars of a kind of element look: the classes of its heading and of its closing rule.
struct BarClasses {
    QLatin1StringView heading;
    QLatin1StringView rule;
};
constexpr BarClasses kHoleBar = {"hh"_L1, "he"_L1};
constexpr BarClasses kBlockBar = {"lh"_L1, "le"_L1};
constexpr BarClasses kStructBar = {"mh"_L1, "me"_L1};
constexpr BarClasses kRegisterBar = {"rh"_L1, "re"_L1};

/// The size of a memory in the largest unit that divides it.
QString sizeWording(int size)
{
    constexpr int kKilobyte = 1024;
    constexpr int kMegabyte = 1024 * 1024;
    if (size % kMegabyte == 0)
        return " (size="_L1 + QString::number(size / kMegabyte) + " MB)"_L1;
    if (size % kKilobyte == 0)
        return " (size="_L1 + QString::number(size / kKilobyte) + " KB)"_L1;
    return " (size="_L1 + QString::number(size) + " B)"_L1;
}

/// The bits of \a field with \a separator between, or the one bit.
void appendPosition(SiteText &text, const VMBitField &field, QLatin1StringView separator)
{
    if (field.upPos != field.downPos)
        text.append(field.upPos, separator);
    text.append(field.downPos);
}

/// Adjacent bits of a register that the same fields cover.
struct BitRun {
    int bits = 0;
    QList<const VMBitField *> fields; ///< in the register's order; none in a gap
};

bool covers(const VMBitField &field, int bit)
{
    return field.downPos <= bit && bit <= field.upPos;
}

/// The runs of \a valuable from its highest bit down. Of a field that reaches beyond the register only the bits inside
/// it count.
QList<BitRun> runsOf(const VMValuable &valuable)
{
    QList<BitRun> runs;
    const int highest = valuable.getBitSize() - 1;
    for (int bit = highest; bit >= 0; --bit) {
        const auto isBorder = [bit](const auto &field) { return covers(*field, bit) != covers(*field, bit + 1); };
        if (bit == highest || std::ranges::any_of(valuable.bitFields, isBorder)) {
            BitRun &run = runs.emplaceBack();
            for (const auto &field : valuable.bitFields) {
                if (covers(*field, bit))
                    run.fields += field.get();
            }
        }
        ++runs.last().bits;
    }
    return runs;
}

/// One of the diagram's three rows below the bit numbers, which differ in their classes and in what they show of a
/// field.
struct DiagramRow {
    QLatin1StringView cellClass;
    QLatin1StringView partClass; ///< of the cells inside a cell that several fields share
    void (*appendContent)(SiteText &text, const VMBitField &field);
};

/// The name, one letter below the other.
void appendUprightName(SiteText &text, const VMBitField &field)
{
    text.append("<a href='#"_L1);
    veldmap::appendAnchor(text, field);
    text.append("'>"_L1);
    const QStringView name = field.getName();
    for (qsizetype at = 0, length = 0; at < name.size(); at += length) {
        length = name[at].isHighSurrogate() && at + 1 < name.size() ? 2 : 1;
        text.append(name.sliced(at, length), "<br>"_L1);
    }
    text.append("</a>"_L1);
}

constexpr DiagramRow kDiagramRows[] = {
    {"v c"_L1, "v"_L1, appendUprightName},
    {"f fc"_L1, "f"_L1, [](SiteText &text, const VMBitField &field) { text.append(field.getAccessString()); }},
    {"f fc"_L1, "f"_L1,
     [](SiteText &text, const VMBitField &field) { text.append(field.getResetString(DISPLAY_DEFAULT)); }},
};

void appendCell(SiteText &text, const BitRun &run, const DiagramRow &row)
{
    text.append("<td class='"_L1, run.fields.isEmpty() ? "hole"_L1 : row.cellClass, "'"_L1);
    if (run.bits > 1)
        text.append(" colspan='"_L1, run.bits, "'"_L1);
    text.append(">"_L1);
    if (run.fields.size() == 1) {
        row.appendContent(text, *run.fields.first());
    } else if (run.fields.size() > 1) {
        text.append("<table align='center'><tr>"_L1);
        for (const VMBitField *field : run.fields) {
            if (field != run.fields.first())
                text.append("<td class='"_L1, row.partClass, "'>|</td>"_L1);
            text.append("<td class='"_L1, row.partClass, "'>"_L1);
            row.appendContent(text, *field);
            text.append("</td>"_L1);
        }
        text.append("</tr></table>"_L1);
    }
    text.append("</td>"_L1);
}

/// The text of elements on a page, all appended to one text, however deep they lie in one another.
class PageWriter {
public:
    explicit PageWriter(SiteText &text) : m_text(text) {}

    void write(const VMXMLElement &element, int level)
    {
        if (m_text.isEnded())
            return;
        veldmap::visit(element, [&](const auto &it) { writeKind(it, level); });
    }

    void writeCommentBox(QLatin1StringView boxClass, const QString &comment, int level)
    {
        writeTableHead(boxClass, level);
        m_text.append("<tr><td class='rc'>"_L1, comment, "</td></tr></table><br/>"_L1);
    }

private:
    void writeTableHead(QLatin1StringView tableClass, int level)
    {
        m_text.append("<table class='"_L1, tableClass, "' style='margin-left:"_L1, marginOf(level), "px'>"_L1);
    }

    void writeHeading(const VMXMLElement &element, const BarClasses &classes, const QString &title, int level)
    {
        m_text.append("<a name='"_L1);
        veldmap::appendAnchor(m_text, element);
        m_text.append("'></a>"_L1);
        writeTableHead(classes.heading, level);
        m_text.append("<tr><td width=100%><b>"_L1, title, "</b></td><td align='right'><b>"_L1,
                      element.getAddressString(), "</b></td></tr></table>"_L1);
    }

    void writeRule(const BarClasses &classes, int level)
    {
        m_text.append("<hr class='"_L1, classes.rule, "' style='margin-left:"_L1, marginOf(level), "px'/>"_L1);
    }

    void writeKind(const VMHole &hole, int level)
    {
        writeHeading(hole, kHoleBar, hole.getName(), level);
        writeRule(kHoleBar, level);
    }

    void writeKind(const VMMemory &memory, int level)
    {
        writeHeading(memory, kBlockBar, memory.getName() + sizeWording(memory.sizeOf()), level);
        if (!memory.comment.isEmpty()) {
            m_text.append("<br/>"_L1);
            writeCommentBox("sc"_L1, memory.comment, level);
        }
        writeRule(kBlockBar, level);
    }

    /// A top-level instance and its members stand at the margin.
    void writeKind(const VMStruct &structure, int level)
    {
        const bool isInstance = structure.isInstance();
        if (isInstance)
            level = 0;
        writeHeading(structure, kStructBar, structure.getName(), level);
        for (const auto &member : structure.memberList)
            write(*member, isInstance ? level : level + 1);
        writeRule(kStructBar, level);
    }

    void writeKind(const VMArray &array, int level)
    {
        const BarClasses &classes = array.prototype->isStruct() ? kBlockBar : kRegisterBar;
        writeHeading(array, classes, array.name + " (size=="_L1 + QString::number(array.count()) + u')', level);
        if (!array.prototype->comment.isEmpty()) {
            m_text.append("<br>"_L1);
            writeCommentBox(kCommentBox, array.prototype->comment, level + 1);
            m_text.append("<br>"_L1);
        }
        for (const auto &member : array.memberList)
            write(*member, level + 1);
        writeRule(classes, level);
    }

    /// The members of an array behind the first bear the class po, and none shows a comment: the array does.
    void writeKind(const VMValuable &valuable, int level)
    {
        const bool isRepeated = valuable.arrayNumber > 0;
        const QLatin1StringView lineBreak = isRepeated ? "<br class='po'>"_L1 : "<br>"_L1;
        const QLatin1StringView tableClass = isRepeated ? "bf po"_L1 : "bf"_L1;
        const bool hasComment = !valuable.comment.isEmpty() && valuable.arrayNumber == -1;
        const bool hasFields = !valuable.bitFields.empty();

        writeHeading(valuable, kRegisterBar, valuable.name, level);
        if (hasFields || hasComment)
            m_text.append(lineBreak);
        if (hasComment)
            writeCommentBox(kCommentBox, valuable.comment, level);
        if (hasFields) {
            writeTableHead(tableClass, level);
            writeDiagram(valuable);
            m_text.append(lineBreak);
            writeTableHead(tableClass, level);
            writeFieldTable(valuable);
            m_text.append(lineBreak);
        }
        writeRule(kRegisterBar, level);
    }

    /// Bitfields stand with their register, and archives on no page.
    void writeKind(const VMXMLElement &, int) {}

    void writeDiagram(const VMValuable &valuable)
    {
        m_text.append("<tr>"_L1);
        for (int bit = valuable.getBitSize() - 1; bit >= 0; --bit)
            m_text.append("<td class='h'>"_L1, bit, "</td>"_L1);
        m_text.append("\n"_L1);
        const QList<BitRun> runs = runsOf(valuable);
        for (const DiagramRow &row : kDiagramRows) {
            m_text.append("</tr><tr>"_L1);
            for (const BitRun &run : runs)
                appendCell(m_text, run, row);
        }
        m_text.append("</tr></table>"_L1);
    }

    void writeFieldTable(const VMValuable &valuable)
    {
        m_text.append("<tr><td class='bh'>Bitfield</td><td class='bh'>Description</td><td class='bh'>Access</td>"
                      "<td class ='bh'>Reset</td></tr>"_L1);
        for (const auto &field : valuable.bitFields) {
            m_text.append("<tr><td class='bh'><a name='"_L1);
            veldmap::appendAnchor(m_text, *field);
            m_text.append("'/>"_L1, field->getName(), "<br><center>["_L1);
            appendPosition(m_text, *field, ":"_L1);
            m_text.append("]</center></td><td class='bc'>"_L1, field->getComment(), "</td><td class='bh'>"_L1,
                          field->getAccessString(), "</td><td class='bh'>"_L1, field->getResetString(DISPLAY_DEFAULT),
                          "</td></tr>"_L1);
        }
        m_text.append("</table>"_L1);
    }

    static qint64 marginOf(int level) { return qint64(kLevelMargin) * level; }

    SiteText &m_text;
};

/// What stands behind the address in an anchor: the kind of an element, since an array and its first member share an
/// address. A field has the address of its register, and 0 without one.
struct AnchorSuffix {
    SiteText &text;

    void operator()(const VMValuable &valuable) const { text.append("r"_L1, valuable.getProtectString()); }
    void operator()(const VMBitField &field) const
    {
        text.append("b"_L1);
        appendPosition(text, field, "-"_L1);
        text.append(field.getAccessString());
    }
    void operator()(const VMStruct &) const { text.append("m"_L1); }
    void operator()(const VMArray &) const { text.append("ra"_L1); }
    void operator()(const VMHole &) const { text.append("h"_L1); }
    void operator()(const VMMemory &) const { text.append("mem"_L1); }
    void operator()(const VMXMLElement &) const {}
};

} // namespace

void veldmap::appendAnchor(SiteText &text, const VMXMLElement &element)
{
    text.append(Hex8{element.getBaseAddress()});
    visit(element, AnchorSuffix{text});
}

void veldmap::appendPageText(SiteText &text, const VMXMLElement &element, int level)
{
    PageWriter(text).write(element, level);
}

QString VMXMLElement::getHrefName() const
{
    SiteText text;
    veldmap::appendAnchor(text, *this);
    return text.toString();
}

QString VMXMLElement::html_serialize(int level) const
{
    SiteText text;
    veldmap::appendPageText(text, *this, level);
    return text.toString();
}

QString VMXMLElement::html_comment_serialize(int level) const
{
    SiteText text;
    PageWriter(text).writeCommentBox(kCommentBox, comment, level);
    return text.toString();
}
