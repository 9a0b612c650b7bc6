#include "support/loaded.h"

#include "files/directories.h"
#include "findings/finding.h"
#include "loading/archive_loader.h"
#include "loading/load.h"
#include "model/aggregates.h"
#include "model/pointer.h"
#include "model/scalars.h"

#include <QDir>
#include <QDomDocument>

using namespace Qt::StringLiterals;

namespace {

QDomElement elementOf(QDomDocument &document, const QString &text)
{
    EXPECT_TRUE(document.setContent(text));
    return document.documentElement();
}

int evaluated(const VMXMLArchive &archive, const QString &expression)
{
    QString message;
    bool failed = false;
    const int value = archive.variables->evalExpression(expression, message, failed);
    return failed ? -1 : value;
}

} // namespace

// Public lists and names are the host's to change; what is looked up afterwards is there.
TEST(Hosts, LookupsSeeWhatAHostHasChanged)
{
    const Loaded soc(
        {{u"soc.xml"_s, u"<archive><include file='a.xml'/><var name='V' value='1'/><var name='W' value='2'/>"
                        "<enum name='e'><entry name='E'/></enum><module name='m'><ptr name='p' type='x'/>"
                        "</module><typedef name='x'><uint8 name='b'/></typedef>"
                        "<instance name='I' type='m'/></archive>"_s},
         {u"a.xml"_s, u"<archive><enum name='e'/></archive>"_s}});
    ASSERT_TRUE(soc.isLoaded());
    VMXMLArchive &archive = soc.archiveAt(0);
    VMXMLElement *module = soc.root().getTemplate(u"m"_s);
    VMVariableManager &variables = *archive.variables;
    EXPECT_EQ(evaluated(archive, u"V+W"_s), 3);

    (*archive.variables)[0].name = u"W"_s;
    (*archive.variables)[1].name = u"V"_s;
    EXPECT_EQ(evaluated(archive, u"W"_s), 1);
    EXPECT_EQ(evaluated(archive, u"V"_s), 2);
    variables.removeAt(1);
    EXPECT_EQ(evaluated(archive, u"V"_s), -1);
    EXPECT_EQ(variables.findVariable(u"V"_s), nullptr);

    EXPECT_EQ(variables.getEnumByName(u"e"_s), soc.archiveAt(1).variables->enums.at(0).get());
    soc.archiveAt(1).variables->enums.clear();
    EXPECT_EQ(variables.getEnumByName(u"e"_s), variables.enums.at(0).get());

    module->typedefName = u"other"_s;
    EXPECT_EQ(soc.root().getTemplate(u"m"_s), nullptr);
    EXPECT_EQ(soc.root().getTemplate(u"other"_s), module);

    const QString file = archive.relativeFileName;
    archive.relativeFileName = u"moved.xml"_s;
    EXPECT_EQ(soc.root().hasArchive(archive.basePath, file), nullptr);
    EXPECT_EQ(soc.root().hasArchive(archive.basePath, u"moved.xml"_s), &archive);

    auto *pointer = elementCast<VMPointer>(soc.map->getElementFromPath(u"$I.p"_s));
    ASSERT_TRUE(pointer);
    pointer->pointedType = u"uint16"_s;
    EXPECT_EQ(soc.map->getElementFromPath(u"$I.p.>"_s)->getTypeString(), u"uint16"_s);
}

TEST(Hosts, EveryCallOfALoaderStartsWithWholeLimits)
{
    VMMemoryMap map;
    VMRootArchive root(&map, u"host"_s);
    VMArchiveLoader loader;
    QDomDocument document;
    QDomElement tag =
        elementOf(document, u"<archive><module name='m'><reg name='r' count='250000'/></module></archive>"_s);
    for (const QString &file : {u"a.xml"_s, u"b.xml"_s, u"c.xml"_s})
        EXPECT_TRUE(loader.manageArchiveTag(tag, file, u"/"_s, &root, nullptr, nullptr, nullptr)) << file.toStdString();
}

// A handler finds what the host put into the tree since the last call.
TEST(Hosts, HandlersSeeTheTreeAsItIs)
{
    VMMemoryMap map;
    VMRootArchive root(&map, u"host"_s);
    VMArchiveLoader loader;
    QDomDocument document;
    QDomElement tag = elementOf(document, u"<archive/>"_s);
    VMXMLArchive *archive = loader.manageArchiveTag(tag, u"a.xml"_s, u"/"_s, &root, nullptr, nullptr, nullptr);
    ASSERT_TRUE(archive);
    VMIntVar variable;
    variable.name = u"N"_s;
    variable.leftValue = 3;
    archive->variables->addVar(variable);
    auto type = std::make_unique<VMUnsignedInt16>(u"unused"_s);
    type->reparent(archive);
    archive->templates.addTemplate(type.release(), u"word"_s);

    QDomElement inner = elementOf(document, u"<instance name='i' type='word' count='N'/>"_s);
    const std::unique_ptr<VMXMLElement> made(loader.manageInstanceTag(inner, archive, u"m"_s));
    ASSERT_TRUE(made);
    EXPECT_EQ(made->sizeOf(), 6);
}

// What a load makes and tells is the same with files that are read ahead, also where some fail or are not taken.
TEST(Hosts, ReadingAheadChangesNothing)
{
    Files files = {{u"soc.xml"_s, u"<archive>"_s}};
    for (int file = 0; file < 60; ++file) {
        const QString name = u"f%1.xml"_s.arg(file);
        files.front().second += u"<include file='%1'/>"_s.arg(name);
        QString content = u"<archive><include file='common.xml'/><include file='f%1.xml'/><include file='no%1.xml' "
                          "optional='%2'/><include><case cond='%3&lt;30' file='c.xml'/></include>"
                          "<var name='V%3' value='C+%3'/></archive>"_s.arg(
                              QString::number((file + 7) % 60), file % 2 ? u"no"_s : u"yes"_s, QString::number(file));
        files.push_back({name, content});
    }
    files.front().second += u"</archive>"_s;
    files.push_back({u"common.xml"_s, u"<archive><var name='C' value='1'/></archive>"_s});
    files.push_back({u"c.xml"_s, u"<archive><module name='m'/></archive>"_s});
    const Loaded written(files);
    const auto told = [&](int threads) {
        VMMemoryMap map;
        veldmap::FindingList list;
        const auto root = veldmap::loadRoot(map, written.path(u"soc.xml"_s), true, list, {.threads = threads});
        QStringList texts;
        for (const veldmap::Finding &finding : list.findings)
            texts += veldmap::placedText(finding);
        for (const VMXMLArchive *archive : root ? root->xmlArchives : QList<VMXMLArchive *>())
            texts += archive->relativeFileName;
        return texts;
    };
    const QStringList alone = told(1);
    EXPECT_GT(alone.size(), 150);
    for (const int threads : {2, 3, 8})
        EXPECT_EQ(told(threads), alone) << threads;
    // A file that is no XML ends both at the same place.
    writeFile(written.path(u"f30.xml"_s), "<archive><include file='f31.xml'/></archiv>");
    EXPECT_EQ(told(4), told(1));
}

TEST(Hosts, DirectoriesStayBelowTheirBase)
{
    const QTemporaryDir base;
    EXPECT_TRUE(recursiveMkdir(base.path(), u"/k/a"_s));
    EXPECT_TRUE(recursiveMkdir(base.path(), u"//l"_s));
    EXPECT_TRUE(QDir(base.filePath(u"k/a"_s)).exists());
    EXPECT_TRUE(QDir(base.filePath(u"l"_s)).exists());
    EXPECT_FALSE(QDir(u"/k/a"_s).exists());
}
