#include "docsite/site_text.h"
#include "model/visit.h"

using namespace Qt::StringLiterals;
using veldmap::Blanks;
using veldmap::SiteText;

// The script of the menu. A node's variable is named after its depth and assigned anew for each node, so that the
// parent of a node is always the present value of the variable above:
//
//     foldersTree = gFld("soc","chip.html")
//     i0 = foldersTree
//         i1=insFld(i0,gFld("UART0","UART0.html#01A00000m"))
//             i2=insFld(i1,gFld("ctrl","UART0.html#01A00000rrw"))
//             i2.iconSrc = "reg32.png"
//             i2.iconSrcClosed = "reg32.png"
//                 i3=insDoc(i2,gLnk("R","enable","UART0.html#01A00000b0rw"))
//                 i3.iconSrc = "bitfield.png"

namespace {

/// The nodes of the elements of one page. All are appended to one text, however deep they lie in one another.
class NodeWriter {
public:
    NodeWriter(SiteText &text, const QString &page) : m_text(text), m_page(page) {}

    void write(const VMXMLElement &element, int level)
    {
        if (m_text.isEnded())
            return;
        veldmap::visit(element, [&](const auto &it) { writeKind(it, level); });
    }

private:
    /// A register without bitfields is a folder too.
    void writeKind(const VMValuable &valuable, int level)
    {
        writeFolder(valuable, level);
        const int bits = valuable.getBitSize();
        const int iconBits = bits == 8 || bits == 16 ? bits : 32;
        for (const QLatin1StringView property : {".iconSrc"_L1, ".iconSrcClosed"_L1}) {
            writeVariable(level);
            m_text.append(property, " = \"reg"_L1, iconBits, ".png\"\n"_L1);
        }
        for (const auto &field : valuable.bitFields)
            write(*field, level + 1);
    }

    void writeKind(const VMStruct &structure, int level) { writeHolder(structure, structure.memberList, level); }
    void writeKind(const VMArray &array, int level) { writeHolder(array, array.memberList, level); }
    void writeKind(const VMBitField &field, int level) { writeLeaf(field, level, "bitfield.png"_L1); }
    void writeKind(const VMHole &hole, int level) { writeLeaf(hole, level, "hole.png"_L1); }
    void writeKind(const VMMemory &memory, int level) { writeLeaf(memory, level, "memory.png"_L1); }
    void writeKind(const VMXMLElement &, int) {}

    void writeHolder(const VMXMLElement &holder, const std::vector<std::unique_ptr<VMXMLElement>> &members, int level)
    {
        writeFolder(holder, level);
        for (const auto &member : members)
            write(*member, level + 1);
    }

    void writeFolder(const VMXMLElement &element, int level)
    {
        writeVariable(level);
        m_text.append("=insFld(i"_L1, level - 1, ",gFld("_L1);
        writeLink(element);
    }

    void writeLeaf(const VMXMLElement &element, int level, QLatin1StringView icon)
    {
        writeVariable(level);
        m_text.append("=insDoc(i"_L1, level - 1, ",gLnk(\"R\","_L1);
        writeLink(element);
        writeVariable(level);
        m_text.append(".iconSrc = \""_L1, icon, "\"\n"_L1);
    }

    /// The begin of every line.
    void writeVariable(int level) { m_text.append(Blanks{4 * level}, "i"_L1, level); }

    /// Title and target of a node, and the end of its line.
    void writeLink(const VMXMLElement &element)
    {
        m_text.append("\""_L1, element.getName(), "\",\""_L1, m_page, "#"_L1);
        veldmap::appendAnchor(m_text, element);
        m_text.append("\"))\n"_L1);
    }

    SiteText &m_text;
    const QString &m_page;
};

} // namespace

void veldmap::appendMenuScript(SiteText &text, const VMRootArchive &root)
{
    text.append("USETEXTLINKS = 1\n"_L1);
    text.append("STARTALLOPEN = 0\n"_L1);
    text.append("foldersTree = gFld(\""_L1, root.getName(), "\",\"chip.html\")\n"_L1);
    text.append("i0 = foldersTree\n"_L1);
    for (const auto &instance : root.instances) {
        const QString page = instance->getName() + ".html"_L1;
        NodeWriter(text, page).write(*instance, 1);
    }
}

QString VMRootArchive::treenode_serialize() const
{
    SiteText text;
    veldmap::appendMenuScript(text, *this);
    return text.toString();
}

QString VMXMLElement::treenode_serialize(int level, const QString &page) const
{
    SiteText text;
    NodeWriter(text, page).write(*this, level);
    return text.toString();
}
