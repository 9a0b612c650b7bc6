#include "findings/quotation.h"
#include "support/loaded.h"

using namespace Qt::StringLiterals;
using veldmap::SourceText;

namespace {

constexpr veldmap::Rule kRule = {"test-quoted"_L1, veldmap::Severity::Error, u"test"};

/// What is shown of \a text, whose place is where a "@" stands, for a finding with \a arguments; the numbers in front
/// are left out.
QString shown(QString text, const QStringList &arguments = {}, int width = 60)
{
    const qsizetype at = text.indexOf(u'@');
    text.remove(at, 1);
    const qint64 line = text.first(at).count(u'\n') + 1;
    const qint64 column = at - (text.lastIndexOf(u'\n', at - text.size() - 1) + 1);
    QString quoted =
        quotation(veldmap::Finding(kRule, {u"soc.xml"_s, line, column}, arguments), SourceText(text), width);
    QStringList lines = quoted.split(u'\n');
    for (QString &one : lines)
        one = one.sliced(qMin<qsizetype>(9, one.size()));
    return lines.join(u'\n');
}

} // namespace

// The place is behind the ">"; the mark lies under what the finding speaks of.
TEST(Quotation, MarksWhatIsMeant)
{
    const struct {
        QString text;
        QStringList arguments;
        QString expected;
    } rows[] = {
        {u"<reg name='a' count='-1'>@"_s, {u"a"_s, u"-1"_s}, u"<reg name='a' count='-1'>\n                     ^~\n"_s},
        {u"<reg name='a' count='-1'>@"_s, {u"a"_s}, u"<reg name='a' count='-1'>\n           ^\n"_s},
        {u"<reg name='a' count='2'>@"_s, {u"uart.a"_s}, u"<reg name='a' count='2'>\n           ^\n"_s},
        {u"<reg name='a' count='2'>@"_s, {u"a.uart"_s}, u"<reg name='a' count='2'>\n ^~~\n"_s},
        {u"<reg name='abc' kuont='-1'/>@"_s, {u"kuont"_s}, u"<reg name='abc' kuont='-1'/>\n                ^~~~~\n"_s},
        {u"<a><Bogus name='u'>@</Bogus></a>"_s,
         {u"u"_s, u"bogus"_s},
         u"<a><Bogus name='u'></Bogus></a>\n    ^~~~~\n"_s},
        {u"<bits pos='1' rst='1'>@"_s, {u"1"_s}, u"<bits pos='1' rst='1'>\n ^~~~\n"_s},
        {u"<bits pos='1'\n\n  rst='a&lt;b > c'\n>@\n<x/>"_s,
         {u"a<b > c"_s},
         u"  rst='a&lt;b > c'\n       ^~~~~~~~~~\n"_s},
        {u"<a>\r\n<b name='x'/>@\r\n</a>"_s, {}, u"<b name='x'/>\n ^\n"_s},
        {u"<a></b>@"_s, {u"b"_s}, u"<a></b>\n      ^\n"_s},
        {u"<!-- a -->@"_s, {}, u"<!-- a -->\n         ^\n"_s},
        {u"<a x=@ y>"_s, {}, u"<a x= y>\n    ^\n"_s},
        {u"@"_s, {}, u"\n^\n"_s},
        {u"<a b='>@"_s, {}, u"<a b='>\n ^\n"_s},
    };
    for (const auto &row : rows)
        EXPECT_EQ(shown(row.text, row.arguments), row.expected);
}

// The point of the mark is the character at which an expression is wrong, also behind its end or in a part of a value.
TEST(Quotation, PointsIntoExpressions)
{
    const SourceText source(u"<var v='a&lt;&lt;b+' p='7:b*'/>"_s);
    const auto at = [&](const QString &expression, qsizetype character) {
        veldmap::Finding finding(kRule, {u"soc.xml"_s, 1, 31});
        finding.expression = {expression, character};
        return quotation(finding, source, 80).section(u'\n', 1).sliced(9);
    };
    EXPECT_EQ(at(u"a<<b+"_s, 0), u"        ^~~~~~~~~~~\n"_s);
    EXPECT_EQ(at(u"a<<b+"_s, 3), u"        ~~~~~~~~~^~\n"_s);
    EXPECT_EQ(at(u"a<<b+"_s, 5), u"        ~~~~~~~~~~~^\n"_s);
    EXPECT_EQ(at(u"b*"_s, 1), u"                        ~~~^\n"_s);
    EXPECT_EQ(at(u"b*"_s, -1), u"                        ^~~~\n"_s);
    EXPECT_EQ(at(u"none"_s, 1), u" ^~~\n"_s);
}

// Tabs, wide and combining characters keep the mark in its column, and nothing that a terminal obeys is shown.
TEST(Quotation, CountsColumnsOfTerminals)
{
    const QStringList x = {u"x"_s};
    EXPECT_EQ(shown(u"\t<b\tc='x'/>@"_s, x), u"        <b      c='x'/>\n                   ^\n"_s);
    EXPECT_EQ(shown(u"<b n='\u65e5\u672c' c='x'/>@"_s, x), u"<b n='\u65e5\u672c' c='x'/>\n               ^\n"_s);
    EXPECT_EQ(shown(u"<b n='e\u0301' c='x'/>@"_s, x), u"<b n='e\u0301' c='x'/>\n            ^\n"_s);
    EXPECT_EQ(shown(u"<b n='\U0001F600' c='x'/>@"_s, x), u"<b n='\U0001F600' c='x'/>\n             ^\n"_s);
    EXPECT_EQ(shown(u"<b n='\u001b[1m\u202e' c='x'/>@"_s, x), u"<b n='?[1m?' c='x'/>\n                ^\n"_s);
}

TEST(Quotation, LongLinesAreCutAroundTheMark)
{
    const QString filler(100'000, u'y');
    const QStringList x = {u"x"_s};
    EXPECT_EQ(shown(u"<b c='x'/>@"_s + filler, x, 40), u"<b c='x'/>yyyyyyyyyyyyyy...\n      ^\n"_s);
    EXPECT_EQ(shown(u"<a d='"_s + filler + u"'/><b c='x'/>@</a>"_s, x, 40),
              u"...yyyyyyy'/><b c='x'/></a>\n                   ^\n"_s);
    for (const QString &text : {u"<b c='"_s + filler + u"'/>@"_s, filler + u"<b c='x'/>@"_s + filler,
                                QString(100'000, u'\u65e5') + u"<b c='x'/>@"_s, filler + u'@' + filler,
                                u"<b c='"_s + QString(100'000, u'\t') + u"'/>@"_s}) {
        for (const int width : {0, 1, 40, 80}) {
            for (const QString &line : shown(text, {filler, u"x"_s}, width).split(u'\n'))
                EXPECT_LE(line.size(), qMax(width - 9, 20)) << line.toStdString();
        }
    }
}

TEST(Quotation, PlacesThatAreNotThere)
{
    const SourceText source(u"<a/>\n<b/>"_s);
    const auto at = [&](qint64 line, qint64 column) {
        return quotation(veldmap::Finding(kRule, {u"soc.xml"_s, line, column}), source, 80);
    };
    EXPECT_EQ(at(0, 0), QString());
    EXPECT_EQ(at(3, 1), QString());
    EXPECT_EQ(at(2, 999), u"     2 | <b/>\n       |     ^\n"_s);
    EXPECT_EQ(at(1, -5), u"     1 | <a/>\n       | ^\n"_s);
}

TEST(SourceText, ReadsTheEncodingThatIsDeclared)
{
    const auto textOf = [](const QByteArray &bytes) {
        const std::optional<SourceText> source = SourceText::ofBytes(bytes);
        return source ? source->text().toString() : u"none"_s;
    };
    const QByteArray latin = "<?xml version='1.0' encoding='ISO-8859-1'?><a b='\xfc'/>";
    EXPECT_EQ(textOf(latin), QString::fromLatin1(latin));
    EXPECT_EQ(textOf("<a b='\xc3\xbc'/>"), u"<a b='\u00fc'/>"_s);
    EXPECT_EQ(textOf(QByteArray("\xff\xfe<\0/\0", 6)), u"</"_s);
    EXPECT_EQ(textOf("<a b='\xfc'/>"), u"none"_s);
    EXPECT_EQ(textOf("<?xml encoding='none-such'?>"), u"none"_s);
    EXPECT_EQ(textOf("<?xml encoding=?>"), u"none"_s);
    EXPECT_EQ(textOf({}), QString());
}
