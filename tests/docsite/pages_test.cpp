// The bodies of the documentation site's pages.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/scalars.h"

#include <QRegularExpression>

#include <climits>

using namespace Qt::StringLiterals;

namespace {

/// The instance M at address 0x10 of a module with \a content.
Loaded instanceOf(const QString &content)
{
    return Loaded::archive(
        u"<enum name='e'><entry name='E0'/></enum><module name='m'><comment>never shown</comment>"_s + content +
        u"</module><instance name='M' type='m' address='0x10'/>"_s);
}

/// The text of the first member of a module with \a content at \a level, without the margin of 0.
QString memberOf(const QString &content, int level = 0)
{
    const Loaded soc = instanceOf(content);
    const auto &instance = static_cast<const VMStruct &>(*soc.root().instances.front());
    return instance.memberList.front()->html_serialize(level).remove(u" style='margin-left:0px'"_s);
}

QString heading(const QString &anchor, const QString &barClass, const QString &title, const QString &address,
                int margin = 0)
{
    QString text = u"<a name='%1'></a><table class='%2' style='margin-left:%5px'><tr><td width=100%><b>%3</b></td>"_s
                   "<td align='right'><b>0x%4</b></td></tr></table>"_s.arg(anchor, barClass, title, address)
                       .arg(margin);
    return margin == 0 ? text.remove(u" style='margin-left:0px'"_s) : text;
}

/// The three rows of the bit diagram of a register with \a content.
QStringList diagramRows(const QString &content)
{
    static const QRegularExpression pattern(u"</td>\n</tr><tr>(.*)</tr></table><br(?: class='po')?><table class='bf"_s);
    const QString rows = pattern.match(memberOf(content)).captured(1);
    return rows.split(QRegularExpression(u"(?<=td>)</tr><tr>"_s)).filter(QRegularExpression(u"^<td"_s));
}

} // namespace

TEST(Pages, WholeRegister)
{
    const QString text = memberOf(uR"xml(<reg8 name='ctrl' protect='rw'><comment>Control</comment>
        <bits name='en' pos='7' access='rw' rst='0' display='dec'><comment>Enable</comment></bits>
        <bits name='md' pos='1:0' access='rw' rst='1' display='dec'><comment>"Mode"</comment></bits></reg8>)xml"_s,
                                  1);
    EXPECT_EQ(
        text,
        u"<a name='00000010rrw'></a><table class='rh' style='margin-left:25px'><tr><td width=100%><b>ctrl</b></td>"
        u"<td align='right'><b>0x00000010</b></td></tr></table>"
        u"<br>"
        u"<table class='bf' style='margin-left:25px'><tr><td class='rc'>Control</td></tr></table><br/>"
        u"<table class='bf' style='margin-left:25px'><tr><td class='h'>7</td><td class='h'>6</td><td class='h'>5</td>"
        u"<td class='h'>4</td><td class='h'>3</td><td class='h'>2</td><td class='h'>1</td><td class='h'>0</td>"
        u"\n</tr><tr>"
        u"<td class='v c'><a href='#00000010b7rw'>e<br>n<br></a></td><td class='hole' colspan='5'></td>"
        u"<td class='v c' colspan='2'><a href='#00000010b1-0rw'>m<br>d<br></a></td>"
        u"</tr><tr>"
        u"<td class='f fc'>rw</td><td class='hole' colspan='5'></td><td class='f fc' colspan='2'>rw</td>"
        u"</tr><tr>"
        u"<td class='f fc'>0</td><td class='hole' colspan='5'></td><td class='f fc' colspan='2'>1</td>"
        u"</tr></table><br>"
        u"<table class='bf' style='margin-left:25px'><tr><td class='bh'>Bitfield</td><td class='bh'>Description</td>"
        u"<td class='bh'>Access</td><td class ='bh'>Reset</td></tr>"
        u"<tr><td class='bh'><a name='00000010b7rw'/>en<br><center>[7]</center></td><td class='bc'>Enable</td>"
        u"<td class='bh'>rw</td><td class='bh'>0</td></tr>"
        u"<tr><td class='bh'><a name='00000010b1-0rw'/>md<br><center>[1:0]</center></td><td class='bc'>\"Mode\"</td>"
        u"<td class='bh'>rw</td><td class='bh'>1</td></tr>"
        u"</table><br>"
        u"<hr class='re' style='margin-left:25px'/>"_s);
}

TEST(Pages, RegistersWithoutFields)
{
    EXPECT_EQ(memberOf(u"<reg32 name='r' protect='w'/>"_s),
              heading(u"00000010r-w"_s, u"rh"_s, u"r"_s, u"00000010"_s) + u"<hr class='re'/>"_s);
    EXPECT_EQ(memberOf(u"<reg32 name='r' protect='r'><comment>a<br/>b &lt; c</comment></reg32>"_s),
              heading(u"00000010rr-"_s, u"rh"_s, u"r"_s, u"00000010"_s) +
                  u"<br><table class='bf'><tr><td class='rc'>a<br>b &lt; c</td></tr></table><br/><hr class='re'/>"_s);
}

TEST(Pages, HolesAndMemories)
{
    EXPECT_EQ(memberOf(u"<hole size='12'/>"_s),
              heading(u"00000010h"_s, u"hh"_s, u"Reserved_00000000_12"_s, u"00000010"_s) + u"<hr class='he'/>"_s);
    const std::pair<int, QString> sizes[] = {{2048, u"2 KB"_s},    {1536, u"1536 B"_s},     {0, u"0 MB"_s},
                                             {1048576, u"1 MB"_s}, {1049600, u"1025 KB"_s}, {3145728, u"3 MB"_s}};
    for (const auto &[size, wording] : sizes) {
        VMMemory memory(u"ram"_s, size);
        EXPECT_EQ(memory.html_serialize(2),
                  heading(u"00000000mem"_s, u"lh"_s, u"ram (size="_s + wording + u')', u"00000000"_s, 50) +
                      u"<hr class='le' style='margin-left:50px'/>"_s);
    }
    EXPECT_EQ(memberOf(u"<memory name='b' size='1'><comment>Buffer</comment></memory>"_s),
              heading(u"00000010mem"_s, u"lh"_s, u"b (size=1 B)"_s, u"00000010"_s) +
                  u"<br/><table class='sc'><tr><td class='rc'>Buffer</td></tr></table><br/><hr class='le'/>"_s);
}

TEST(Pages, StructuresStepAwayFromTheMargin)
{
    const Loaded soc = instanceOf(u"<struct name='s'><comment>never shown</comment><uint8 name='x'/></struct>"_s);
    EXPECT_EQ(soc.root().instances.front()->html_serialize(3).remove(u" style='margin-left:0px'"_s),
              heading(u"00000010m"_s, u"mh"_s, u"M"_s, u"00000010"_s) +
                  heading(u"00000010m"_s, u"mh"_s, u"s"_s, u"00000010"_s) +
                  heading(u"00000010rrw"_s, u"rh"_s, u"x"_s, u"00000010"_s, 25) +
                  u"<hr class='re' style='margin-left:25px'/><hr class='me'/><hr class='me'/>"_s);
}

TEST(Pages, ArraysShowEveryMemberAndOneComment)
{
    EXPECT_EQ(
        memberOf(u"<reg8 name='a' count='2' protect='rw'><comment>each</comment></reg8>"_s),
        heading(u"00000010ra"_s, u"rh"_s, u"a (size==2)"_s, u"00000010"_s) +
            u"<br><table class='bf' style='margin-left:25px'><tr><td class='rc'>each</td></tr></table><br/><br>"_s +
            heading(u"00000010rrw"_s, u"rh"_s, u"a[0]"_s, u"00000010"_s, 25) +
            u"<hr class='re' style='margin-left:25px'/>"_s +
            heading(u"00000011rrw"_s, u"rh"_s, u"a[1]"_s, u"00000011"_s, 25) +
            u"<hr class='re' style='margin-left:25px'/><hr class='re'/>"_s);
    EXPECT_EQ(memberOf(u"<struct name='s' count='0'><uint8 name='x'/></struct>"_s),
              heading(u"00000010ra"_s, u"lh"_s, u"s (size==0)"_s, u"00000010"_s) + u"<hr class='le'/>"_s);

    // The diagrams behind the first member's are marked, so that they can be left out in print.
    const QString text = memberOf(u"<reg8 name='a' count='3'><bits name='f' pos='0'/></reg8>"_s);
    EXPECT_EQ(text.count(u"<table class='bf' "_s), 2);
    EXPECT_EQ(text.count(u"<table class='bf po' "_s), 4);
    EXPECT_EQ(text.count(u"<br class='po'>"_s), 6);
    EXPECT_LT(text.lastIndexOf(u"<table class='bf' "_s), text.indexOf(u"a[1]"_s));
}

TEST(Pages, DiagramCells)
{
    struct Row {
        QString content;
        QString names;
        QString resets;
    };
    const QString f = u"<a href='#00000010b%1--'>f<br></a>"_s;
    const QString pair = u"<table align='center'><tr><td class='v'>%1</td><td class='v'>|</td><td class='v'>%2</td>"_s
                         "</tr></table>"_s;
    const Row rows[] = {
        // a field over everything, and a value without reset
        {u"<reg32 name='r'><bits name='f' pos='31:0' rst='no' access='no'/></reg32>"_s,
         u"<td class='v c' colspan='32'>%1</td>"_s.arg(f.arg(u"31-0"_s)), u"<td class='f fc' colspan='32'>-</td>"_s},
        // neighbours of one name are two fields
        {u"<reg8 name='r'><bits name='f' pos='7:4' rst='2' access='no' display='hex'/>"_s
         "<bits name='f' pos='3:0' rst='1' access='no'/></reg8>",
         u"<td class='v c' colspan='4'>%1</td><td class='v c' colspan='4'>%2</td>"_s.arg(f.arg(u"7-4"_s),
                                                                                         f.arg(u"3-0"_s)),
         u"<td class='f fc' colspan='4'>0x2</td><td class='f fc' colspan='4'>1</td>"_s},
        // shared bits, in the order of the fields, and a hole at the top
        {u"<reg8 name='r'><bits name='f' pos='2:0' rst='1' access='no' display='dec'/>"_s
         "<bits name='f' pos='6:1' rst='3' access='no' display='dec'/></reg8>",
         u"<td class='hole'></td><td class='v c' colspan='4'>%2</td><td class='v c' colspan='2'>%3</td>"_s
         "<td class='v c'>%1</td>"_s.arg(f.arg(u"2-0"_s), f.arg(u"6-1"_s), pair.arg(f.arg(u"2-0"_s), f.arg(u"6-1"_s))),
         u"<td class='hole'></td><td class='f fc' colspan='4'>3</td><td class='f fc' colspan='2'>"_s +
             QString(pair).replace(u"'v'"_s, u"'f'"_s).arg(1).arg(3) + u"</td><td class='f fc'>1</td>"_s},
        // bits beyond the register have no column
        {u"<reg8 name='r'><bits name='f' pos='9:6' rst='2' access='no' display='dec'/>"_s
         "<bits name='f' pos='12' rst='0' access='no'/></reg8>",
         u"<td class='v c' colspan='2'>%1</td><td class='hole' colspan='6'></td>"_s.arg(f.arg(u"9-6"_s)),
         u"<td class='f fc' colspan='2'>2</td><td class='hole' colspan='6'></td>"_s},
        // a member whose type is an enum is one field
        {u"<instance name='i' type='e'/>"_s,
         u"<td class='v c' colspan='32'><a href='#00000010b31-0rw'>e<br>n<br>u<br>m<br></a></td>"_s,
         u"<td class='f fc' colspan='32'>0</td>"_s},
    };
    for (const Row &row : rows) {
        const QStringList found = diagramRows(row.content);
        ASSERT_EQ(found.size(), 3) << memberOf(row.content).toStdString();
        EXPECT_EQ(found[0], row.names);
        EXPECT_EQ(found[2], row.resets);
    }
}

TEST(Pages, FieldsBeyondTheRegisterStandInTheTable)
{
    const QString text = memberOf(u"<reg8 name='r'><bits name='part' pos='9:6'/><bits name='out' pos='12'/></reg8>"_s);
    EXPECT_TRUE(text.contains(u"/>part<br><center>[9:6]</center>"_s)) << text.toStdString();
    EXPECT_TRUE(text.contains(u"/>out<br><center>[12]</center>"_s)) << text.toStdString();
    EXPECT_FALSE(text.contains(u">o<br>u<br>t<br>"_s));

    // Any positions at all, as a host may set them.
    VMRegister8 valuable(u"r"_s, true, true);
    for (const auto &[up, down] : {std::pair(INT_MAX, INT_MIN), std::pair(0, 7), std::pair(-1, -3)})
        valuable.addBitField(
            std::make_unique<VMBitField>(u"f"_s, true, 0, QString(), up, QString(), down, 0, false, DISPLAY_DEC)
                .release());
    const QString any = valuable.html_serialize(0);
    EXPECT_EQ(any.count(u"<td class='v c' colspan='8'>"_s), 1);
    EXPECT_EQ(any.count(u"<center>["_s), 3);
}

TEST(Pages, AnchorsOfPartsByThemselves)
{
    VMBitField field(u"f"_s, true, 2, QString(), 5, QString(), 5, 0, false, DISPLAY_DEC);
    EXPECT_EQ(field.getHrefName(), u"00000000b5rs"_s);
    const Loaded soc = Loaded::archive(QString());
    EXPECT_EQ(soc.root().getHrefName() + soc.root().html_serialize(0), u"00000000"_s);
    EXPECT_EQ(field.html_serialize(1), QString());
    field.comment = u"why"_s;
    EXPECT_EQ(field.html_comment_serialize(2),
              u"<table class='bf' style='margin-left:50px'><tr><td class='rc'>why</td></tr></table><br/>"_s);
}
