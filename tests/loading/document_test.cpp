// What is read as a document, and what is refused before it costs too much.

#include "support/loaded.h"

#include "loading/archive_loader.h"
#include "loading/memory_map_loader.h"
#include "model/aggregates.h"

#include <QDomDocument>
#include <QStringEncoder>

using namespace Qt::StringLiterals;

TEST(Document, MalformedTextIsToldAsTheParserTellsIt)
{
    const QByteArray documents[] = {"",
                                    "not xml",
                                    "<archive>",
                                    "<archive>\n <a></b>\n</archive>",
                                    "<archive a='1' a='2'/>",
                                    "<archive>&nope;</archive>",
                                    "<archive/><archive/>",
                                    "<archive>\xff\xfe</archive>",
                                    "<?xml version='1.0' encoding='UTF-8'?>\n<archive>caf\xe9</archive>",
                                    "\n<?xml version='1.0'?><archive/>",
                                    "<archive x=1/>",
                                    "<archive><!-- -- --></archive>",
                                    QByteArray("<arch\0ive/>", 11),
                                    "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>",
                                    "<archive><!DOCTYPE b></archive>",
                                    "<archive/><!DOCTYPE b>",
                                    "<!DOCTYPE a []><!DOCTYPE b []><archive/>"};
    for (const QByteArray &bytes : documents) {
        QDomDocument document;
        QString message;
        int line = 0;
        int column = 0;
        ASSERT_FALSE(document.setContent(bytes, &message, &line, &column)) << bytes.constData();
        Loaded soc(QString::fromUtf8("<archive/>"));
        writeFile(soc.path(u"bad.xml"_s), bytes);
        static QStringList errors;
        errors.clear();
        VMMemoryMap map;
        EXPECT_EQ(VMMemoryMapLoader().loadRootArchiveFromFile(
                      &map, soc.path(u"bad.xml"_s), nullptr,
                      [](const char *text) { errors += QString::fromUtf8(text); }, nullptr, true),
                  nullptr);
        EXPECT_EQ(errors, QStringList(soc.path(u"bad.xml"_s) +
                                      u":%1:%2:%3"_s.arg(QString::number(line), QString::number(column), message)));
    }
}

TEST(Document, RootElements)
{
    const std::pair<QString, QStringList> rows[] = {
        {u"<ARCHIVE/>"_s, {}},
        {u"<chip/>"_s, {u"soc.xml:0:0:Old archive format! Please edit your xml files to conform to the new norm."_s}},
        {u"<soft/>"_s, {u"soc.xml:0:0:Old archive format! Please edit your xml files to conform to the new norm."_s}},
        {u"<Module name='m'/>"_s, {u"soc.xml:0:0:Bad archive format!"_s}},
        {u"<other/>"_s, {u"soc.xml:0:0:Bad archive format!"_s}},
        {u"<module/>"_s, {u"soc.xml:1:9:module has no name !"_s}},
    };
    for (const auto &[text, errors] : rows) {
        const Loaded soc(text);
        EXPECT_EQ(soc.errors, errors) << text.toStdString();
        EXPECT_EQ(soc.isLoaded(), errors.isEmpty());
    }
    const Loaded old(u"<module name='m'><reg8 name='r'/></module>"_s);
    EXPECT_EQ(old.warnings,
              QStringList(u"soc.xml:0:0:You are using an old archive format! Please enclose the content of "_s
                          "your file into an <archive> tag!"_s));
    EXPECT_EQ(old.type<VMStruct>(u"m"_s).sizeOf(), 1);
    EXPECT_FALSE(old.archiveAt(0).generateAsm);
}

TEST(Document, NothingToLoad)
{
    static QStringList logs;
    static QStringList warnings;
    const auto load = [](const QString &path, bool chip) {
        VMMemoryMap map;
        return VMMemoryMapLoader().loadRootArchiveFromFile(
            &map, path, [](const char *text) { logs += QString::fromUtf8(text); },
            [](const char *text) { FAIL() << text; }, [](const char *text) { warnings += QString::fromUtf8(text); },
            chip);
    };
    EXPECT_EQ(load(QString(), true), nullptr);
    EXPECT_EQ(load(QString(), false), nullptr);
    EXPECT_EQ(load(u"/no/such.xml"_s, true), nullptr);
    EXPECT_EQ(load(u"/"_s, true), nullptr);
    EXPECT_EQ(logs, QStringList({u"No XML Chip to Load."_s, u"No XML Soft to Load."_s}));
    EXPECT_EQ(warnings, QStringList({u"Unable to open file /no/such.xml"_s, u"Unable to open file /"_s}));
}

TEST(Document, DepthEntitiesAndAttributesAreLimited)
{
    const auto nested = [](int depth) {
        return u"<archive>"_s + u"<a>\n"_s.repeated(depth - 1) + u"</a>"_s.repeated(depth - 1) + u"</archive>"_s;
    };
    EXPECT_EQ(Loaded(nested(256)).errors, QStringList(u"soc.xml:1:12:Unvalid tag : 'a'"_s));
    EXPECT_EQ(Loaded(nested(257)).errors, QStringList(u"soc.xml:256:3:Tags are nested more than 256 deep."_s));
    const auto withEntities = [](const QString &entity, int references) {
        return u"<!DOCTYPE archive [<!ENTITY e '%1'>]><archive><comment>%2</comment></archive>"_s.arg(
            entity, u"&e;"_s.repeated(references));
    };
    EXPECT_EQ(Loaded(withEntities(u"word"_s, 3)).archiveAt(0).archiveComment, u"wordwordword"_s);
    EXPECT_FALSE(Loaded(withEntities(u"x"_s.repeated(4000), 100'000)).isLoaded());
    EXPECT_EQ(Loaded(withEntities(u"<b>"_s.repeated(300) + u"</b>"_s.repeated(300), 1)).errors.size(), 1);

    QString attributes;
    for (int at = 0; at < 1025; ++at)
        attributes += u" a%1=''"_s.arg(at);
    EXPECT_EQ(Loaded(u"\n <archive"_s + attributes + u"/>"_s).errors,
              QStringList(u"soc.xml:2:1:A tag has more than 1024 attributes."_s));
    const QString manySigns = u"a='='; "_s.repeated(2000);
    for (const QString &form :
         {u"<cjoker>%1</cjoker>"_s, u"<!--%1-->"_s, u"<?p %1?>"_s, u"<cjoker><![CDATA[%1]]></cjoker>"_s})
        EXPECT_TRUE(Loaded::archive(form.arg(manySigns)).isLoaded()) << form.toStdString();

    // Built-in references are no entities, and a bomb is one in every encoding.
    const QString harmless = u"<!DOCTYPE archive [<!ENTITY e '%1'>]><archive><comment>&e;%2</comment></archive>"_s;
    EXPECT_TRUE(Loaded(harmless.arg(u"x"_s.repeated(150), u"&lt;"_s.repeated(140'000))).isLoaded());
    const QString bomb = withEntities(u"x"_s.repeated(4000), 100'000);
    const Loaded soc(u"<archive><include file='bomb.xml'/></archive>"_s);
    writeFile(soc.path(u"bomb.xml"_s), QStringEncoder(QStringConverter::Utf16, QStringConverter::Flag::WriteBom)(bomb));
    VMMemoryMap map;
    EXPECT_EQ(
        VMMemoryMapLoader().loadRootArchiveFromFile(&map, soc.path(u"bomb.xml"_s), nullptr, nullptr, nullptr, true),
        nullptr);
}

TEST(Document, HandlersTakeElementsOfADocument)
{
    const Loaded soc = Loaded::archive(u"<var name='N' value='2'/>"_s);
    QDomDocument document;
    ASSERT_TRUE(document.setContent(u"<module name='m'>\n<reg8 name='r' count='N'/><bits/></module>"_s));
    QDomElement tag = document.documentElement();
    QDomElement reg = tag.firstChildElement();
    VMArchiveLoader loader;
    const std::unique_ptr<VMXMLElement> array(loader.manageValuableTag(reg, &soc.archiveAt(0), QString(), u"reg8"_s));
    ASSERT_TRUE(array);
    EXPECT_EQ(array->sizeOf(), 2);
    EXPECT_EQ(loader.manageModuleOrTypedefTag(tag, &soc.archiveAt(0)), nullptr);
    EXPECT_EQ(loader.manageModuleOrTypedefTag(reg, &soc.archiveAt(0)), nullptr);
}
