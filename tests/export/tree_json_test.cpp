// The tree as JSON is the text that Qt writes of the same values, and is given in pieces.

#include "export/tree_json.h"

#include "model/aggregates.h"

#include "support/loaded.h"
#include "text/text_sink.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

/// Keeps the pieces of a text, and takes no more than \a most of them.
struct Pieces final : veldmap::TextSink {
    explicit Pieces(qsizetype most = 1'000'000) : most(most) {}
    bool take(QByteArrayView piece) override
    {
        pieces += piece.toByteArray();
        return pieces.size() < most;
    }

    qsizetype most;
    QByteArrayList pieces;
};

} // namespace

TEST(TreeJson, EveryCharacterIsWrittenAsQtWritesIt)
{
    const Loaded soc = Loaded::archive(u"<module name='m'><reg name='r'/></module>"_s);
    QString all;
    for (int unit = 1; unit <= 0xFFFF; ++unit) // halves of pairs alone, and low before high ones
        all += QChar(unit);
    for (const QString &text : {all, u"😀 \xD83D"_s, u""_s, u"\""_s, u"a\\b"_s, u"Größe\x7F"_s}) {
        soc.type<VMStruct>(u"m"_s).comment = text;
        const QByteArray json = veldmap::treeJson(*soc.map);
        const QByteArray quoted = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact).sliced(1).chopped(1);
        EXPECT_TRUE(json.contains("\"comment\":" + quoted + ",\"declaredType\"")) << text.size();
    }
}

TEST(TreeJson, ObjectsAreThoseOfQtWithTheirMembersBehind)
{
    const Loaded soc(u"<archive><var name='N' value='3'/><enum name='e'><entry name='on' value='-1'/></enum>"
                     "<module name='m'><reg name='r' count='N' protect='rw'><bits name='f' pos='3:1' rst='2' enum='e'/>"
                     "<bitgroup name='g'><entry ref='f'/></bitgroup></reg><hole size='32'/></module>"
                     "<instance name='I' type='m' address='0xFFFF0000'/></archive>"_s);
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    const QByteArray json = veldmap::treeJson(*soc.map);
    for (const auto &member : elementCast<VMStruct>(soc.root().instances.front().get())->memberList) {
        // Alone it is what stands in the tree, but for the members.
        const QJsonObject alone = veldmap::elementJson(*member);
        QJsonObject plain = alone;
        plain.remove(u"prototype"_s);
        EXPECT_TRUE(json.contains(QJsonDocument(plain).toJson(QJsonDocument::Compact).chopped(1)))
            << json.toStdString();
    }
    const QJsonObject tree = QJsonDocument::fromJson(json).object();
    EXPECT_EQ(tree.keys(), QStringList({u"chip"_s, u"globals"_s, u"soft"_s}));
    EXPECT_EQ(tree[u"chip"_s][u"instances"_s][0][u"members"_s][0][u"members"_s].toArray().size(), 3);
}

TEST(TreeJson, ManyMembersComeInPieces)
{
    const Loaded soc(u"<archive><module name='m'><reg name='r' count='30000'/></module>"
                     "<instance name='I' type='m' address='0'/></archive>"_s);
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    Pieces all;
    EXPECT_TRUE(veldmap::writeTreeJson(*soc.map, all));
    EXPECT_GT(all.pieces.size(), 5);
    for (const QByteArray &piece : std::as_const(all.pieces))
        EXPECT_LT(piece.size(), 2 * 1024 * 1024);
    EXPECT_EQ(all.pieces.join(), veldmap::treeJson(*soc.map));
    EXPECT_TRUE(QJsonDocument::fromJson(all.pieces.join()).isObject());
    Pieces few(2);
    EXPECT_FALSE(veldmap::writeTreeJson(*soc.map, few));
    EXPECT_EQ(few.pieces, all.pieces.first(2)) << "nobody is asked again who takes no more";
}
