// The script of the documentation site's menu.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/bitfield.h"

using namespace Qt::StringLiterals;

namespace {

/// The nodes of the members of a module with \a content, at level 1.
QString nodesOf(const QString &content)
{
    const Loaded soc =
        Loaded::archive(u"<module name='m'>"_s + content + u"</module><instance name='M' type='m' address='0x10'/>"_s);
    QString text;
    for (const auto &member : static_cast<const VMStruct &>(*soc.root().instances.front()).memberList)
        text += member->treenode_serialize(1, u"P.html"_s);
    return text;
}

} // namespace

TEST(Menu, WholeScript)
{
    const Loaded soc = Loaded::archive(
        u"<module name='uart'><reg32 name='ctrl' protect='rw'><bits name='enable' pos='0' access='rw'/></reg32>"_s
        "<hole size='32'/><memory name='buf' size='8'/></module>"
        "<instance name='UART0' type='uart' address='0x01A00000'/>");
    EXPECT_EQ(soc.root().treenode_serialize(), uR"(USETEXTLINKS = 1
STARTALLOPEN = 0
foldersTree = gFld("soc","chip.html")
i0 = foldersTree
    i1=insFld(i0,gFld("UART0","UART0.html#01A00000m"))
        i2=insFld(i1,gFld("ctrl","UART0.html#01A00000rrw"))
        i2.iconSrc = "reg32.png"
        i2.iconSrcClosed = "reg32.png"
            i3=insDoc(i2,gLnk("R","enable","UART0.html#01A00000b0rw"))
            i3.iconSrc = "bitfield.png"
        i2=insDoc(i1,gLnk("R","Reserved_00000004_32","UART0.html#01A00004h"))
        i2.iconSrc = "hole.png"
        i2=insDoc(i1,gLnk("R","buf","UART0.html#01A00008mem"))
        i2.iconSrc = "memory.png"
)"_s);
    EXPECT_EQ(Loaded::archive(QString()).root().treenode_serialize(),
              u"USETEXTLINKS = 1\nSTARTALLOPEN = 0\nfoldersTree = gFld(\"soc\",\"chip.html\")\ni0 = foldersTree\n"_s);
}

TEST(Menu, IconsTellTheWidth)
{
    const std::pair<QString, int> rows[] = {
        {u"reg8"_s, 8},   {u"ireg"_s, 8},    {u"bool"_s, 8},   {u"int8"_s, 8},
        {u"reg16"_s, 16}, {u"uint16"_s, 16}, {u"reg32"_s, 32}, {u"ptr type='void'"_s, 32},
    };
    for (const auto &[tag, bits] : rows) {
        const QStringList lines = nodesOf(u"<"_s + tag + u" name='r'/>"_s).split(u'\n');
        ASSERT_EQ(lines.size(), 4) << tag.toStdString();
        EXPECT_EQ(lines[1], u"    i1.iconSrc = \"reg%1.png\""_s.arg(bits)) << tag.toStdString();
        EXPECT_EQ(lines[2], u"    i1.iconSrcClosed = \"reg%1.png\""_s.arg(bits)) << tag.toStdString();
    }
}

TEST(Menu, ArraysAndStructures)
{
    EXPECT_EQ(nodesOf(u"<reg16 name='a' count='2' protect='r'/><struct name='s'><uint8 name='x'/></struct>"_s),
              uR"(    i1=insFld(i0,gFld("a","P.html#00000010ra"))
        i2=insFld(i1,gFld("a[0]","P.html#00000010rr-"))
        i2.iconSrc = "reg16.png"
        i2.iconSrcClosed = "reg16.png"
        i2=insFld(i1,gFld("a[1]","P.html#00000012rr-"))
        i2.iconSrc = "reg16.png"
        i2.iconSrcClosed = "reg16.png"
    i1=insFld(i0,gFld("s","P.html#00000014m"))
        i2=insFld(i1,gFld("x","P.html#00000014rrw"))
        i2.iconSrc = "reg8.png"
        i2.iconSrcClosed = "reg8.png"
)"_s);
}

TEST(Menu, PartsByThemselves)
{
    const VMBitField field(u"f"_s, false, 3, u"4"_s, 4, u"1"_s, 1, 0, false, DISPLAY_DEC);
    EXPECT_EQ(field.treenode_serialize(2, u"P.html"_s),
              u"        i2=insDoc(i1,gLnk(\"R\",\"f\",\"P.html#00000000b4-1-c\"))\n"_s
              "        i2.iconSrc = \"bitfield.png\"\n");
    const Loaded soc = Loaded::archive(QString());
    EXPECT_EQ(soc.root().treenode_serialize(1, u"P.html"_s), QString()); // the root has no node of its own
}
