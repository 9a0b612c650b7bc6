// The bodies of the documentation site's pages, and the nodes of its menu.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/scalars.h"

#include <climits>

using namespace Qt::StringLiterals;

namespace {

const QString kFrame = u"<enum name='e'><entry name='E0'/></enum><module name='m'><comment>never shown</comment>%1"
                       "</module><instance name='M' type='m' address='0x10'/>"_s;

/// A page with each table, row and rule on a line of its own; a line end of the page shows as \n.
QString inLines(QString page)
{
    page.replace(u'\n', u"\\n"_s);
    for (const QString &tag : {u"<table"_s, u"<tr"_s, u"<hr"_s})
        page.replace(tag, u'\n' + tag);
    return page + u'\n';
}

VMBitField fieldAt(int up, int down, int writeMode)
{
    return VMBitField(u"f"_s, true, writeMode, QString(), up, QString(), down, 0, false, DISPLAY_DEC);
}

} // namespace

TEST(Pages, OfEachKindOfElement)
{
    expectCases(
        u"docsite/pages.txt"_s,
        [](const Loaded &soc, const QStringList &words) {
            const VMXMLElement &instance = *soc.root().instances.front();
            const int level = words.at(1).toInt();
            if (words.first() == u"instance"_s)
                return inLines(instance.html_serialize(level));
            QString text;
            for (const auto &member : static_cast<const VMStruct &>(instance).memberList)
                text += inLines(member->html_serialize(level));
            return text;
        },
        kFrame);
}

TEST(Menu, OfEachKindOfElement)
{
    expectCases(
        u"docsite/menu.txt"_s,
        [](const Loaded &soc, const QStringList &words) {
            if (words.first() == u"script"_s)
                return soc.root().treenode_serialize();
            QString text;
            for (const auto &member : static_cast<const VMStruct &>(*soc.root().instances.front()).memberList)
                text += member->treenode_serialize(1, u"P.html"_s);
            return text;
        },
        kFrame);
}

TEST(Pages, FieldsAtAnyPositionsThatAHostSets)
{
    VMRegister8 valuable(u"r"_s, true, true);
    for (const auto &[up, down] : {std::pair(INT_MAX, INT_MIN), std::pair(0, 7), std::pair(-1, -3)})
        valuable.addBitField(new VMBitField(fieldAt(up, down, 0)));
    const QString any = valuable.html_serialize(0);
    EXPECT_EQ(any.count(u"<td class='v c' colspan='8'>"_s), 1);
    EXPECT_EQ(any.count(u"<center>["_s), 3);
}

TEST(Pages, PartsByThemselves)
{
    VMBitField field = fieldAt(5, 5, 2);
    EXPECT_EQ(field.getHrefName(), u"00000000b5rs"_s);
    EXPECT_EQ(field.html_serialize(1), QString());
    field.comment = u"why"_s;
    EXPECT_EQ(field.html_comment_serialize(2),
              u"<table class='bf' style='margin-left:50px'><tr><td class='rc'>why</td></tr></table><br/>"_s);
    const VMBitField clears(u"f"_s, false, 3, u"4"_s, 4, u"1"_s, 1, 0, false, DISPLAY_DEC);
    EXPECT_EQ(clears.treenode_serialize(2, u"P.html"_s),
              u"        i2=insDoc(i1,gLnk(\"R\",\"f\",\"P.html#00000000b4-1-c\"))\n"_s
              "        i2.iconSrc = \"bitfield.png\"\n");

    const Loaded soc = Loaded::archive(QString());
    EXPECT_EQ(soc.root().getHrefName() + soc.root().html_serialize(0), u"00000000"_s);
    EXPECT_EQ(soc.root().treenode_serialize(1, u"P.html"_s), QString()); // the root has no node of its own
    EXPECT_EQ(soc.root().treenode_serialize(),
              u"USETEXTLINKS = 1\nSTARTALLOPEN = 0\nfoldersTree = gFld(\"soc\",\"chip.html\")\ni0 = foldersTree\n"_s);
}
