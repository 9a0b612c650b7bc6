#include "site/chapter.h"

#include "model/visit.h"
#include "site/bit_diagram.h"
#include "site/comment_html.h"
#include "site/field_macros.h"
#include "site/html_text.h"
#include "site/page_rows.h"
#include "site/site_plan.h"

#include <algorithm>

using namespace Qt::StringLiterals;

// A register in a chapter, broken here for reading:
//
//     <section id="ctrl" data-offset="0" data-bits="32">
//     <h2><a href="#ctrl">ctrl</a></h2>
//     <p class="facts"><b>0x40000000</b> offset 0x0 ... <span class="source">uart.xml:10</span></p>
//     <div class="text">Control</div>
//     <div class="bits" ...>...</div>                                                    bit_diagram.cpp
//     <div class="wide"><table class="fields">
//         <tr id="ctrl.speed" data-up="3" data-down="1" data-macro="UART_SPEED(n)" data-mask="UART_SPEED_MASK">
//         <th scope="row"><a href="#ctrl.speed">speed</a></th><td>3:1</td><td>read, write</td><td>2</td>
//         <td>Clock divider<ul class="options"><li data-value="5" data-macro="UART_SPEED_FAST">
//         <code>5</code> <b>fast</b> 1 Mbaud</li></ul></td><td class="source">uart.xml:13</td></tr></table></div>
//     </section>
//
// The data-... are what the scripts read; nothing is said there alone.

namespace veldmap {

namespace {

constexpr int kSummaryLength = 90;
constexpr qint64 kMembersListed = 128; ///< of an array; of a longer one the first and the last are
constexpr qint64 kMembersOfLong = 4;

/// What a member or an instance is, in a word or two.
QString kindWords(const VMXMLElement &element)
{
    return visit(
        element,
        Overloads{[](const VMPointer &pointer) -> QString { return "pointer to "_L1 + pointer.pointedType; },
                  [](const VMValuable &valuable) -> QString {
                      const QString word = valuable.getTypeString();
                      return word.startsWith("Reg"_L1) && valuable.typedefName.isEmpty() ? u"register"_s : word;
                  },
                  [](const VMMemory &) -> QString { return u"memory"_s; },
                  [](const VMHole &) -> QString { return u"gap"_s; },
                  [](const VMStruct &structure) -> QString {
                      return structure.typedefName.isEmpty()
                                 ? u"structure"_s
                                 : (structure.isTypedef ? "structure "_L1 : "module "_L1) + structure.typedefName;
                  },
                  [](const VMXMLElement &other) -> QString { return other.getTypeString(); }});
}

/// \a count with \a noun, which gets an "s" behind it where that is due.
void appendCount(HtmlText &text, qint64 count, QLatin1StringView noun)
{
    text.put(count, " "_L1, noun, count == 1 ? ""_L1 : "s"_L1);
}

class ChapterWriter {
public:
    ChapterWriter(HtmlText &text, const Chapter &chapter, PageIds &ids)
        : m_text(text), m_chapter(chapter), m_plan(chapter.plan), m_ids(ids),
          m_macros(chapter.type ? chapter.type->element->getTypeString() : chapter.element.getTypeString()),
          m_base(chapter.instance ? chapter.element.getBaseAddress() : 0),
          m_prefix(chapter.isAlone    ? QByteArray()
                   : chapter.instance ? chapter.instance->id
                                      : chapter.type->id),
          m_rows(rowsOf(chapter.element, m_prefix, ids, chapter.instance && chapter.type && chapter.type->hasAsm))
    {
    }

    void write()
    {
        m_text.put(m_chapter.isAlone ? "<main id=\"-main\" class=\"chapter\""_L1 : "<article class=\"chapter\""_L1);
        writePaths();
        m_text.put(">\n"_L1);
        if (std::ranges::any_of(m_rows, [](const PageRow &row) { return !row.fieldIds.empty(); }) && m_chapter.isAlone)
            appendDiagramParts(m_text);
        writeHead();
        writeContents();
        m_text.put("<div class=\"sections\">\n"_L1);
        for (const PageRow &row : m_rows) {
            if (m_text.isEnded())
                return;
            visit(*row.element, [&](const auto &element) { writeRow(element, row); });
        }
        m_text.put(m_chapter.isAlone ? "</div>\n</main>"_L1 : "</div>\n</article>\n"_L1);
    }

private:
    const QString &title() const
    {
        return m_chapter.instance ? m_chapter.element.getName() : m_chapter.element.typedefName;
    }

    bool isHardware() const
    {
        const auto *structure = elementCast<VMStruct>(&m_chapter.element);
        return structure && !structure->isTypedef;
    }

    // The names are those of headers/instance_macros.cpp.
    QString pointerName() const { return (isHardware() ? "hwp_"_L1 : "p_"_L1) + m_chapter.element.getCInstanceName(); }
    QString baseName() const { return "REG_"_L1 + m_chapter.element.getName().toUpper() + "_BASE"_L1; }

    /// What the scripts make paths of.
    void writePaths()
    {
        m_text.put(" data-name=\""_L1, title(), "\""_L1);
        if (!m_chapter.instance)
            return;
        m_text.put(" data-base=\""_L1, m_base, "\""_L1);
        if (!m_chapter.type)
            return;
        m_text.put(" data-pointer=\""_L1, pointerName(), "\" data-macro=\""_L1, baseName(), "\""_L1);
        if (m_chapter.type->hasAsm)
            m_text.put(" data-asm=\"\""_L1);
    }

    void openHeading(int level) { m_text.put("<h"_L1, qMin(level + (m_chapter.isAlone ? 1 : 2), 6), ">"_L1); }
    void closeHeading(int level) { m_text.put("</h"_L1, qMin(level + (m_chapter.isAlone ? 1 : 2), 6), ">\n"_L1); }

    // The head
    // ---------------------------------------------------------------------------------------------------------

    void writeHead()
    {
        m_text.put("<div class=\"head\">\n"_L1);
        if (!m_chapter.isAlone)
            m_text.put("<div id=\""_L1, m_prefix, "\"></div>"_L1);
        openHeading(0);
        m_text.put(title());
        closeHeading(0);
        writeComment(m_chapter.element.getComment());
        m_text.put("<dl class=\"facts\">\n"_L1);
        if (m_chapter.instance)
            writePlace();
        else
            writeFact("Kind"_L1, isHardware() ? u"module"_s : kindWords(m_chapter.element));
        m_text.put("<dt>Size</dt><dd>"_L1);
        writeSize(static_cast<quint32>(m_chapter.element.sizeOf()));
        m_text.put("</dd>\n"_L1);
        if (!m_chapter.element.category.isEmpty() && m_chapter.element.category != "Unclassified"_L1)
            writeFact("Category"_L1, m_chapter.element.category);
        if (m_chapter.instance && m_chapter.type) {
            writeFact("In C"_L1, pointerName() + ", "_L1 + baseName());
            writeType();
        }
        writeSourceFact();
        if (!m_chapter.instance)
            writeUses();
        m_text.put("</dl>\n</div>\n"_L1);
    }

    void writeFact(QLatin1StringView term, const QString &fact)
    {
        m_text.put("<dt>"_L1, term, "</dt><dd>"_L1, fact, "</dd>\n"_L1);
    }

    void writePlace()
    {
        const auto size = static_cast<quint32>(m_chapter.element.sizeOf());
        m_text.put("<dt>Address</dt><dd><code>0x"_L1, Hex{m_base, 8}, "</code>"_L1);
        if (size > 0)
            m_text.put(" to <code>0x"_L1, Hex{m_base + size - 1, 8}, "</code>"_L1);
        m_text.put("</dd>\n"_L1);
    }

    void writeSize(quint32 bytes)
    {
        constexpr quint32 kKilobyte = 1024;
        if (bytes >= kKilobyte * kKilobyte && bytes % (kKilobyte * kKilobyte) == 0)
            m_text.put(bytes / (kKilobyte * kKilobyte), " MB"_L1);
        else if (bytes >= kKilobyte && bytes % kKilobyte == 0)
            m_text.put(bytes / kKilobyte, " KB"_L1);
        else
            appendCount(m_text, bytes, "byte"_L1);
    }

    /// The type, and where else it stands.
    void writeType()
    {
        const SiteType &type = *m_chapter.type;
        m_text.put("<dt>Type</dt><dd>"_L1);
        if (type.hasPage) {
            m_text.put("<a href=\""_L1);
            appendLink(m_text, type, m_chapter.isAlone);
            m_text.put("\">"_L1, type.element->typedefName, "</a>, of "_L1);
            appendCount(m_text, type.instances.size(), "instance"_L1);
        } else {
            m_text.put(type.element->typedefName);
        }
        m_text.put("</dd>\n"_L1);
    }

    void writeSourceFact()
    {
        const SourcePlace &place = m_chapter.element.source;
        if (m_plan.fileOf(place).isEmpty())
            return;
        m_text.put("<dt>Source</dt><dd>"_L1);
        appendSource(m_text, m_plan, place);
        m_text.put("</dd>\n"_L1);
    }

    void writeUses()
    {
        const SiteType &type = *m_chapter.type;
        if (!type.instances.isEmpty()) {
            m_text.put("<dt>Instances</dt><dd><ul class=\"row\">"_L1);
            for (const qsizetype at : type.instances) {
                const SiteInstance &instance = m_plan.instances()[static_cast<std::size_t>(at)];
                m_text.put("<li><a href=\""_L1);
                appendLink(m_text, instance, m_chapter.isAlone);
                m_text.put("\">"_L1, instance.element->getName(), "</a> <code>0x"_L1,
                           Hex{instance.element->getBaseAddress(), 8}, "</code></li>"_L1);
            }
            m_text.put("</ul></dd>\n"_L1);
        }
        if (!type.users.isEmpty()) {
            m_text.put("<dt>Part of</dt><dd><ul class=\"row\">"_L1);
            for (const qsizetype at : type.users) {
                const SiteType &user = m_plan.types()[static_cast<std::size_t>(at)];
                m_text.put("<li><a href=\""_L1);
                appendLink(m_text, user, m_chapter.isAlone);
                m_text.put("\">"_L1, user.element->typedefName, "</a></li>"_L1);
            }
            m_text.put("</ul></dd>\n"_L1);
        }
    }

    // The table of the registers
    // ---------------------------------------------------------------------------------------

    void writeContents()
    {
        m_text.put(m_chapter.isAlone ? "<nav class=\"contents\" aria-label=\"Registers\">"_L1
                                     : "<div class=\"contents\">"_L1);
        m_text.put(
            "<table>\n<thead><tr><th scope=\"col\">Offset</th><th scope=\"col\">Name</th><th scope=\"col\">Bits</th>"
            "<th scope=\"col\">Access</th><th scope=\"col\">Reset</th></tr></thead>\n<tbody>\n"_L1);
        const int digits = static_cast<quint32>(m_chapter.element.sizeOf()) > 0x1000 ? 4 : 3;
        for (const PageRow &row : m_rows) {
            if (row.id.isEmpty())
                continue;
            m_text.put("<tr><td>0x"_L1, Hex{row.offset, digits}, "</td><td"_L1);
            if (row.level > 0)
                m_text.put(" class=\"l"_L1, qMin(row.level, 4), "\""_L1);
            m_text.put("><a href=\"#"_L1, fragmentOf(row.id), "\">"_L1);
            writeOwnName(row);
            m_text.put("</a>"_L1);
            if (const QString summary = summaryOf(commentOf(row), kSummaryLength); !summary.isEmpty())
                m_text.put("<small>"_L1, summary, "</small>"_L1);
            m_text.put("</td>"_L1);
            writeContentsCells(*row.element);
            m_text.put("</tr>\n"_L1);
        }
        m_text.put(m_chapter.isAlone ? "</tbody></table></nav>\n"_L1 : "</tbody></table></div>\n"_L1);
    }

    void writeContentsCells(const VMXMLElement &element)
    {
        const auto *valuable = elementCast<VMValuable>(&element);
        if (!valuable) {
            m_text.put("<td></td><td></td><td></td>"_L1);
            return;
        }
        m_text.put("<td>"_L1, valuable->getBitSize(), "</td><td>"_L1, valuable->readable ? "r"_L1 : ""_L1,
                   valuable->writable ? "w"_L1 : ""_L1, "</td><td>"_L1, resetText(*valuable), "</td>"_L1);
    }

    void writeOwnName(const PageRow &row)
    {
        m_text.put(row.name);
        for (std::size_t at = row.repeatedAround; at < row.repetitions.size(); ++at)
            m_text.put("["_L1, QByteArrayView(&row.repetitions[at].letter, 1), "]"_L1);
    }

    /// Arrays bear the comment of what they repeat.
    static const QString &commentOf(const PageRow &row)
    {
        const QString &own = row.element->getComment();
        return own.isEmpty() && row.array ? row.array->getComment() : own;
    }

    // Sections
    // ---------------------------------------------------------------------------------------------------------

    void openSection(const PageRow &row, QLatin1StringView kind)
    {
        m_text.put("<section id=\""_L1, row.id, "\" class=\""_L1, kind, "\" data-offset=\""_L1, row.offset, "\""_L1);
        const QByteArray path = row.path.toUtf8();
        if (row.id.size() != path.size() + (m_prefix.isEmpty() ? 0 : m_prefix.size() + 1) || !row.id.endsWith(path))
            m_text.put(" data-path=\""_L1, row.path, "\""_L1);
        if (m_chapter.type && m_chapter.type->hasAsm && m_chapter.instance && kind == "reg"_L1)
            m_text.put(" data-asm=\"REG_"_L1, QString::fromUtf8(row.asmName), "\""_L1);
        for (std::size_t at = 0; at < row.repetitions.size(); ++at) {
            const Repetition &repetition = row.repetitions[at];
            m_text.put(at == 0 ? " data-repeat=\""_L1 : " "_L1, QByteArrayView(&repetition.letter, 1), ":"_L1,
                       repetition.count, ":"_L1, repetition.stride, at + 1 == row.repetitions.size() ? "\""_L1 : ""_L1);
        }
    }

    void writeHeading(const PageRow &row)
    {
        m_text.put(">\n"_L1);
        openHeading(row.level + 1);
        m_text.put("<a href=\"#"_L1, fragmentOf(row.id), "\">"_L1, row.path, "</a>"_L1);
        closeHeading(row.level + 1);
    }

    /// The place of a row, which in arrays is a formula, up to its other facts.
    void openFacts(const PageRow &row)
    {
        m_text.put("<p class=\"facts\"><b class=\"place\">"_L1);
        if (m_chapter.instance)
            m_text.put("0x"_L1, Hex{m_base + row.offset, 8});
        else
            m_text.put("+0x"_L1, Hex{row.offset, 3});
        for (const Repetition &repetition : row.repetitions)
            m_text.put(" + 0x"_L1, Hex{repetition.stride}, "·"_L1, QByteArrayView(&repetition.letter, 1));
        m_text.put("</b>"_L1);
        if (m_chapter.instance)
            m_text.put(" <span>offset 0x"_L1, Hex{row.offset}, "</span>"_L1);
    }

    void closeFacts(const VMXMLElement &element)
    {
        m_text.put(" "_L1);
        appendSource(m_text, m_plan, element.source);
        m_text.put("</p>\n"_L1);
    }

    void writeComment(const QString &comment)
    {
        if (comment.isEmpty())
            return;
        m_text.put("<div class=\"text\">"_L1);
        appendComment(m_text, comment);
        m_text.put("</div>\n"_L1);
    }

    /// How often a row stands there, and where.
    void writeMembers(const PageRow &row)
    {
        if (!row.isRepeated())
            return;
        m_text.put("<p class=\"array\">"_L1);
        for (std::size_t at = row.repeatedAround; at < row.repetitions.size(); ++at) {
            const Repetition &repetition = row.repetitions[at];
            const QByteArrayView letter(&repetition.letter, 1);
            if (at > row.repeatedAround)
                m_text.put("; "_L1);
            appendCount(m_text, repetition.count, "member"_L1);
            if (repetition.count > 0)
                m_text.put(", <var>"_L1, letter, "</var> from 0 to "_L1, repetition.count - 1, ", "_L1);
            else
                m_text.put(", "_L1);
            appendCount(m_text, repetition.stride, "byte"_L1);
            m_text.put(" apart"_L1);
            if (repetition.countExpression != QString::number(repetition.count))
                m_text.put(" (<code>"_L1, repetition.countExpression, "</code>)"_L1);
        }
        m_text.put("</p>\n"_L1);
        if (row.repetitions.size() == 1 && row.repetitions[0].count > 0)
            writeMemberList(row, row.repetitions[0]);
    }

    void writeMemberList(const PageRow &row, const Repetition &repetition)
    {
        const bool isLong = repetition.count > kMembersListed;
        m_text.put("<ul class=\"members\">"_L1);
        const QByteArray stem = row.id.chopped(3); // "[n]"
        for (qint64 index = 0; index < repetition.count; ++index) {
            if (isLong && index == kMembersOfLong) {
                m_text.put("<li>…</li>"_L1);
                index = repetition.count - 1;
            }
            const QByteArray id = m_ids.take({}, QString::fromUtf8(stem + '[' + QByteArray::number(index) + ']'));
            const quint32 place = m_base + row.offset + repetition.stride * static_cast<quint32>(index);
            m_text.put("<li id=\""_L1, id, "\"><a href=\"#"_L1, fragmentOf(id), "\">["_L1, index, "]</a> 0x"_L1,
                       Hex{place, m_chapter.instance ? 8 : 3}, "</li>"_L1);
        }
        m_text.put("</ul>\n"_L1);
    }

    void writeRow(const VMStruct &structure, const PageRow &row)
    {
        openSection(row, "group"_L1);
        writeHeading(row);
        openFacts(row);
        m_text.put(" <span>"_L1);
        const SiteType *type = m_plan.typeNamed(structure.typedefName, isOfChip());
        if (type && type->hasPage) {
            m_text.put("structure <a href=\""_L1);
            appendLink(m_text, *type, m_chapter.isAlone);
            m_text.put("\">"_L1, structure.typedefName, "</a>"_L1);
        } else {
            m_text.put(kindWords(structure));
        }
        m_text.put(", "_L1);
        writeSize(static_cast<quint32>(structure.sizeOf()));
        m_text.put("</span>"_L1);
        closeFacts(structure);
        writeComment(commentOf(row));
        writeMembers(row);
        m_text.put("</section>\n"_L1);
    }

    bool isOfChip() const { return m_chapter.instance ? m_chapter.instance->isChip : m_chapter.type->isChip; }

    void writeRow(const VMMemory &memory, const PageRow &row)
    {
        openSection(row, "memory"_L1);
        writeHeading(row);
        openFacts(row);
        m_text.put(" <span>memory, "_L1);
        writeSize(static_cast<quint32>(memory.sizeOf()));
        m_text.put("</span>"_L1);
        closeFacts(memory);
        writeComment(commentOf(row));
        writeMembers(row);
        m_text.put("</section>\n"_L1);
    }

    void writeRow(const VMHole &hole, const PageRow &row)
    {
        m_text.put("<p class=\"gap\"><b>"_L1, m_chapter.instance ? "0x"_L1 : "+0x"_L1,
                   Hex{m_base + row.offset, m_chapter.instance ? 8 : 3}, "</b> gap of "_L1);
        if (hole.holeBits % 8 == 0)
            appendCount(m_text, hole.holeBits / 8, "byte"_L1);
        else
            appendCount(m_text, hole.holeBits, "bit"_L1);
        m_text.put(" "_L1);
        appendSource(m_text, m_plan, hole.source);
        m_text.put("</p>\n"_L1);
    }

    void writeRow(const VMValuable &valuable, const PageRow &row)
    {
        openSection(row, "reg"_L1);
        m_text.put(" data-bits=\""_L1, valuable.getBitSize(), "\""_L1);
        writeHeading(row);
        openFacts(row);
        m_text.put(" <span>"_L1, valuable.getBitSize(), " bits</span> <span>"_L1);
        writeKind(valuable);
        m_text.put("</span> <span>"_L1, accessWords(valuable), "</span>"_L1);
        if (const QByteArray reset = resetText(valuable); !reset.isEmpty())
            m_text.put(" <span>reset <code>"_L1, reset, "</code></span>"_L1);
        if (!valuable.lowName.isEmpty() || !valuable.highName.isEmpty())
            m_text.put(" <span>halves "_L1, valuable.highName, " (high), "_L1, valuable.lowName, " (low)</span>"_L1);
        closeFacts(valuable);
        writeComment(commentOf(row));
        writeMembers(row);
        if (!valuable.bitFields.empty())
            writeFields(valuable, row);
        m_text.put("</section>\n"_L1);
    }

    /// Pseudo-elements beyond these have no section.
    void writeRow(const VMXMLElement &, const PageRow &) {}

    void writeKind(const VMValuable &valuable)
    {
        const auto *pointer = elementCast<VMPointer>(&valuable);
        const SiteType *type = m_plan.typeNamed(pointer ? pointer->pointedType : valuable.typedefName, isOfChip());
        if (!type || (!pointer && type == m_chapter.type)) {
            m_text.put(kindWords(valuable));
            return;
        }
        m_text.put(pointer ? "pointer to <a href=\""_L1 : "<a href=\""_L1);
        appendLink(m_text, *type, m_chapter.isAlone);
        m_text.put("\">"_L1, type->element->typedefName, "</a>"_L1);
    }

    void writeFields(const VMValuable &valuable, const PageRow &row)
    {
        appendDiagram(m_text, valuable, row.fieldIds);
        m_text.put("<div class=\"wide\"><table class=\"fields\">\n<thead><tr><th scope=\"col\">Field</th>"
                   "<th scope=\"col\">Bits</th><th scope=\"col\">Access</th><th scope=\"col\">Reset</th>"
                   "<th scope=\"col\">Description</th><th scope=\"col\">Source</th></tr></thead>\n<tbody>\n"_L1);
        for (std::size_t at = 0; at < valuable.bitFields.size(); ++at)
            writeField(*valuable.bitFields[at], row.fieldIds[at]);
        m_text.put("</tbody></table></div>\n"_L1);
        for (const auto &group : valuable.bitGroups)
            writeGroup(*group);
    }

    void writeAttribute(QLatin1StringView name, const QByteArray &macro)
    {
        if (!macro.isEmpty())
            m_text.put(" data-"_L1, name, "=\""_L1, QString::fromUtf8(macro), "\""_L1);
    }

    void writeField(const VMBitField &field, const QByteArray &id)
    {
        const FieldMacros::OfField macros = m_macros.take(field);
        m_text.put("<tr id=\""_L1, id, "\" data-up=\""_L1, field.upPos, "\" data-down=\""_L1, field.downPos, "\""_L1);
        writeAttribute("macro"_L1, macros.value);
        writeAttribute("mask"_L1, macros.mask);
        writeAttribute("shift"_L1, macros.shift);
        m_text.put("><th scope=\"row\"><a href=\"#"_L1, fragmentOf(id), "\">"_L1, field.getName(), "</a></th><td>"_L1,
                   field.upPos);
        if (field.upPos != field.downPos)
            m_text.put(":"_L1, field.downPos);
        m_text.put("</td><td>"_L1, accessWords(field), "</td><td>"_L1);
        if (field.hasReset)
            m_text.put(field.getResetString(DISPLAY_DEFAULT));
        m_text.put("</td><td>"_L1);
        appendComment(m_text, ownComment(field));
        writeOptions(field, macros);
        m_text.put("</td><td>"_L1);
        if (field.source.file.name() == field.parent->source.file.name())
            m_text.put("<span class=\"source\">line "_L1, field.source.line, "</span>"_L1);
        else
            appendSource(m_text, m_plan, field.source);
        m_text.put("</td></tr>\n"_L1);
    }

    void writeOptions(const VMBitField &field, const FieldMacros::OfField &macros)
    {
        const QList<VMBitFieldOption> &options = field.options.optionList;
        if (options.isEmpty())
            return;
        m_text.put("<ul class=\"options\">"_L1);
        for (qsizetype at = 0; at < options.size(); ++at) {
            const VMBitFieldOption &option = options[at];
            const auto value = static_cast<quint32>(option.value);
            m_text.put("<li data-value=\""_L1, value, "\""_L1);
            writeAttribute("macro"_L1, macros.options[static_cast<std::size_t>(at)]);
            m_text.put("><code>"_L1, field.convertValueToValueString(value, DISPLAY_DEFAULT, false, false),
                       "</code> <b>"_L1, option.name, "</b>"_L1);
            if (!option.comment.isEmpty()) {
                m_text.put(" <span>"_L1);
                m_text.put(plainComment(option.comment));
                m_text.put("</span>"_L1);
            }
            m_text.put("</li>"_L1);
        }
        m_text.put("</ul>"_L1);
    }

    void writeGroup(const VMBitGroup &group)
    {
        m_text.put("<p class=\"array\">Group <b>"_L1, group.name, "</b>:"_L1);
        for (const VMBitField *field : group)
            m_text.put(field == group.first() ? " "_L1 : ", "_L1, field->getName());
        if (const FieldMacros::OfField macros = m_macros.take(group); !macros.value.isEmpty())
            m_text.put("; in C <code>"_L1, QString::fromUtf8(macros.value), "</code>"_L1);
        m_text.put("</p>\n"_L1);
    }

    HtmlText &m_text;
    const Chapter &m_chapter;
    const SitePlan &m_plan;
    PageIds &m_ids;
    FieldMacros m_macros;
    quint32 m_base;
    QByteArray m_prefix;
    PageRows m_rows;
};

} // namespace

void appendChapter(HtmlText &text, const Chapter &chapter, PageIds &ids)
{
    ChapterWriter(text, chapter, ids).write();
}

void appendLink(HtmlText &text, const SiteInstance &instance, bool isAlone)
{
    if (isAlone)
        text.put(instance.file);
    else
        text.put("#"_L1, fragmentOf(instance.id));
}

void appendLink(HtmlText &text, const SiteType &type, bool isAlone)
{
    if (isAlone)
        text.put(type.file);
    else
        text.put("#"_L1, fragmentOf(type.id));
}

void appendSource(HtmlText &text, const SitePlan &plan, const SourcePlace &place)
{
    const QString file = plan.fileOf(place);
    if (!file.isEmpty())
        text.put("<span class=\"source\">"_L1, file, ":"_L1, place.line, "</span>"_L1);
}

} // namespace veldmap
