// The operations of a loader as a host calls them one by one, each on an element of a QDomDocument.

#include "support/loaded.h"

#include "loading/archive_loader.h"
#include "loading/memory_map_loader.h"
#include "model/aggregates.h"
#include "model/bitfield.h"
#include "model/valuable.h"

#include <QDomDocument>

using namespace Qt::StringLiterals;

namespace {

QStringList told;

void keep(const char *text)
{
    told += QString::fromUtf8(text);
}

/// A host in the middle of its work.
struct Host {
    Host()
    {
        writeFile(directory.filePath(u"soc.xml"_s),
                  "<archive><var name='V' value='2'/><enum name='e'><entry name='E'/></enum><typedef name='pair'>"
                  "<uint8 name='a'/><uint8 name='b'/></typedef><module name='m'><reg name='r'><bits name='f' pos='0'/>"
                  "</reg></module></archive>");
        writeFile(directory.filePath(u"other.xml"_s), "<archive/>");
        XMDOpenError status = XMDOpenInvalid;
        archive = loader.loadArchiveFromFile(directory.filePath(u"soc.xml"_s), u"soc.xml"_s, directory.path(), &root,
                                             keep, keep, keep, true, status);
        EXPECT_EQ(status, XMDOpenSuccess);
        told.clear();
        module = elementCast<VMStruct>(root.getTemplate(u"m"_s));
        valuable = elementCast<VMValuable>(module->memberList.at(0).get());
        field = valuable->bitFields.at(0).get();
    }

    const VMIntVar &newest() const { return archive->variables->last(); }
    VMEnum &oldEnum() const { return *archive->variables->enums.at(0); }

    QTemporaryDir directory;
    VMMemoryMap map;
    VMRootArchive root{&map, u"host"_s};
    VMArchiveLoader loader;
    VMXMLArchive *archive = nullptr;
    VMStruct *module = nullptr;
    VMValuable *valuable = nullptr;
    VMBitField *field = nullptr;
};

const QString kRefused = u"refused"_s;

/// An element that the caller owns, in words.
QString owned(VMXMLElement *element)
{
    const std::unique_ptr<VMXMLElement> owner(element);
    return element ? u"%1 %2 of %3"_s.arg(element->getTypeString(), element->getName()).arg(element->sizeOf())
                   : kRefused;
}

/// One that stays with the tree.
QString kept(const VMXMLElement *element)
{
    return element ? u"%1 %2 of %3"_s.arg(element->getTypeString(), element->getName()).arg(element->sizeOf())
                   : kRefused;
}

/// What an operation made of a tag it takes; and why it refuses another, which is told once.
struct Operation {
    QString tag;
    QString answer;
    QString wrongTag;
    QString message;
    std::function<QString(Host &, QDomElement &)> call;
};

const std::vector<Operation> kOperations = {
    {u"<var name='A' value='V+1'/>"_s, u"A 3"_s, u"<var value='1'/>"_s,
     u"A variable of the archive 'soc' has no name!"_s,
     [](Host &host, QDomElement &tag) {
         return host.loader.manageVarTag(tag, host.archive)
                    ? host.newest().name + u' ' + QString::number(host.newest().leftValue)
                    : kRefused;
     }},
    {u"<range name='R' left='V' right='1'/>"_s, u"R 2 1"_s, u"<range left='1' right='0'/>"_s, u"Range has no name!"_s,
     [](Host &host, QDomElement &tag) {
         const VMIntVar *range = host.loader.manageRangeTag(tag, host.archive) ? &host.newest() : nullptr;
         return range ? u"%1 %2 %3"_s.arg(range->name).arg(range->leftValue).arg(range->rightValue) : kRefused;
     }},
    {u"<enum name='n'><entry name='N' value='4'/></enum>"_s, u"n with N 4"_s, u"<enum name='n'><entry/></enum>"_s,
     u"This entry has no name!"_s,
     [](Host &host, QDomElement &tag) {
         return host.loader.manageEnumTag(tag, host.archive)
                    ? u"%1 with %2 %3"_s.arg(host.archive->variables->enums.back()->name, host.newest().name)
                          .arg(host.newest().leftValue)
                    : kRefused;
     }},
    {u"<entry name='E7' value='7'/>"_s, u"E7 7"_s, u"<entry/>"_s, u"This entry has no name!"_s,
     [](Host &host, QDomElement &tag) {
         return host.loader.manageEnumEntryTag(tag, &host.oldEnum(), host.archive)
                    ? u"%1 %2"_s.arg(host.newest().name).arg(host.newest().leftValue)
                    : kRefused;
     }},
    {u"<bound name='NB'/>"_s, u"NB 1"_s, u"<bound/>"_s, u"A bound of the enum 'e' has no name!"_s,
     [](Host &host, QDomElement &tag) {
         return host.loader.manageEnumBoundTag(tag, &host.oldEnum(), host.archive)
                    ? u"%1 %2"_s.arg(host.newest().name).arg(host.newest().leftValue)
                    : kRefused;
     }},
    {u"<spacer>More</spacer>"_s,
     u"3"_s,
     {},
     {},
     [](Host &host, QDomElement &tag) {
         return host.loader.manageSpacerTag(tag, host.archive) ? QString::number(host.archive->variables->size())
                                                               : kRefused;
     }},
    {u"<module name='n'><reg name='x'/></module>"_s, u"n  of 4"_s, u"<module><reg name='x'/></module>"_s,
     u"module has no name !"_s,
     [](Host &host, QDomElement &tag) { return kept(host.loader.manageModuleOrTypedefTag(tag, host.archive)); }},
    {u"<module><reg name='x'/><reg name='y'/></module>"_s, u"m  of 12"_s, u"<module><regg name='x'/></module>"_s,
     u"Module contains an unvalid regg tag."_s,
     [](Host &host, QDomElement &tag) {
         return host.loader.manageModuleOrTypedefTag(tag, host.module) ? kept(host.module) : kRefused;
     }},
    {u"<struct name='s'><reg16 name='x' count='2'/></struct>"_s, u" s of 4"_s, u"<struct name='s'><x/></struct>"_s,
     u"Struct 's' contains an unvalid 'x' tag."_s,
     [](Host &host, QDomElement &tag) { return owned(host.loader.manageStructTag(tag, host.archive, u"m"_s)); }},
    {u"<hole size='V*8'/>"_s, u"Hole Reserved_00000000_16 of 2"_s, u"<hole size='X'/>"_s,
     u"Hole expression X : Error in expression of : X"_s,
     [](Host &host, QDomElement &tag) { return owned(host.loader.manageHoleTag(tag, host.archive, u"m"_s)); }},
    {u"<alias name='q'><uint8 name='u' count='2'/></alias>"_s, u"uint8[] u of 2"_s, u"<alias name='q'><x/></alias>"_s,
     u"Alias 'q' contains an unvalid 'x' tag."_s,
     [](Host &host, QDomElement &tag) {
         return host.loader.manageAliasTag(tag, host.archive) ? kept(host.root.getTemplate(u"q"_s)) : kRefused;
     }},
    {u"<instance name='I' type='m' address='0x40'/>"_s, u"m I of 4"_s, u"<instance name='I' type='x'/>"_s,
     u"Could not instanciate instance 'I' of type 'x'!"_s,
     [](Host &host, QDomElement &tag) { return kept(host.loader.manageInstanceTag(tag, host.archive)); }},
    {u"<instance name='i' type='pair' count='V'/>"_s, u"pair[] i of 4"_s, u"<instance name='i' type='x'/>"_s, u"'x'"_s,
     [](Host &host, QDomElement &tag) { return owned(host.loader.manageInstanceTag(tag, host.archive, u"m"_s)); }},
    {u"<memory name='ram' size='16'/>"_s, u"memory ram of 16"_s, u"<memory name='ram' size='X'/>"_s, u"'ram'"_s,
     [](Host &host, QDomElement &tag) { return owned(host.loader.manageMemoryTag(tag, host.archive, u"m"_s)); }},
    {u"<ptr name='p' type='pair'/>"_s, u"pair* p of 4"_s, u"<ptr name='p' type='pair' count='X'/>"_s, u"'p'"_s,
     [](Host &host, QDomElement &tag) { return owned(host.loader.managePtrTag(tag, host.archive, u"m"_s)); }},
    {u"<reg16 name='x'/>"_s, u"Reg16 x of 2"_s, u"<reg16 name='x' count='X'/>"_s, u"'x'"_s,
     [](Host &host, QDomElement &tag) {
         return owned(host.loader.manageValuableTag(tag, host.archive, u"m"_s, u"reg16"_s));
     }},
    {u"<bits name='b' pos='3:V' access='rw'/>"_s, u"b 3:2"_s, u"<bits name='b' pos='X'/>"_s,
     u"bitfield b, expression X : Error in expression of : X"_s,
     [](Host &host, QDomElement &tag) {
         if (!host.loader.manageBitsTag(tag, host.valuable, host.archive))
             return kRefused;
         const VMBitField &made = *host.valuable->bitFields.back();
         return u"%1 %2:%3"_s.arg(made.getName()).arg(made.upPos).arg(made.downPos);
     }},
    {u"<bitgroup name='g'><entry ref='f'/></bitgroup>"_s, u"g 1"_s, u"<bitgroup name='g'><entry ref='x'/></bitgroup>"_s,
     u"'x'"_s,
     [](Host &host, QDomElement &tag) {
         if (!host.loader.manageBitgroupTag(tag, host.valuable, host.archive))
             return kRefused;
         const VMBitGroup *made = host.valuable->getBitGroupByName(u"g"_s);
         return made ? u"%1 %2"_s.arg(made->name).arg(made->size()) : u"none"_s;
     }},
    {u"<entry ref='f'/>"_s, u"1"_s, u"<entry ref='x'/>"_s, u"'x'"_s,
     [](Host &host, QDomElement &tag) {
         VMBitGroup group(u"g"_s, host.valuable);
         return host.loader.manageBitgroupEntryTag(tag, &group, host.archive) ? QString::number(group.size())
                                                                              : kRefused;
     }},
    {u"<options><mask/><option name='on' value='1'/></options>"_s, u"1 with a mask"_s, u"<options><x/></options>"_s,
     u"'x'"_s,
     [](Host &host, QDomElement &tag) {
         return host.loader.manageOptionsTag(tag, host.field, host.archive)
                    ? QString::number(host.field->options.optionList.size()) +
                          (host.field->options.hasMask ? u" with a mask"_s : QString())
                    : kRefused;
     }},
    {u"<option name='on' value='V'/>"_s, u"on 2"_s, u"<option name='on' value='X'/>"_s,
     u"Option expression X : Error in expression of : X"_s,
     [](Host &host, QDomElement &tag) {
         VMBitFieldOptions options;
         return host.loader.manageOptionsOptionTag(tag, &options, host.archive)
                    ? options.optionList.at(0).name + u' ' + QString::number(options.optionList.at(0).value)
                    : kRefused;
     }},
    {u"<include file='other.xml'/>"_s,
     u"0 of 2"_s,
     u"<include file='soc.xml' load='maybe'/>"_s,
     {},
     [](Host &host, QDomElement &tag) {
         const XMDOpenError status = host.loader.manageIncludeTag(tag, host.archive);
         return u"%1 of %2"_s.arg(int(status)).arg(host.root.xmlArchives.size());
     }},
};

} // namespace

TEST(LoaderOperations, TakeAndRefuseTagsOneByOne)
{
    for (const Operation &operation : kOperations) {
        SCOPED_TRACE(operation.tag.toStdString());
        const auto answer = [&](const QString &text) {
            Host host;
            QDomDocument document;
            EXPECT_TRUE(document.setContent(text));
            QDomElement tag = document.documentElement();
            return operation.call(host, tag);
        };
        EXPECT_EQ(answer(operation.tag), operation.answer);
        if (operation.message.isEmpty())
            continue;
        EXPECT_EQ(answer(operation.wrongTag), kRefused);
        ASSERT_EQ(told.size(), 1);
        EXPECT_TRUE(told.at(0).contains(operation.message)) << told.at(0).toStdString();
        EXPECT_TRUE(told.at(0).contains("/soc.xml:1:"_L1)) << told.at(0).toStdString();
    }
}

TEST(LoaderOperations, EntriesOfIncludesAreNotedAndLoaded)
{
    Host host;
    VMXMLInclude include;
    const auto entry = [&](const QString &file, const QString &condition, bool load, bool optional) {
        return host.loader.manageIncludeEntry(host.archive, include, file, condition, load, optional);
    };
    EXPECT_EQ(entry(u"other.xml"_s, u"V==2"_s, false, false), XMDOpenSuccess);
    EXPECT_EQ(host.root.xmlArchives.size(), 1);
    EXPECT_EQ(entry(u"other.xml"_s, {}, true, false), XMDOpenSuccess);
    EXPECT_EQ(host.root.xmlArchives.size(), 2);
    ASSERT_EQ(include.conditions.size(), 1);
    EXPECT_EQ(include.conditions.at(0).condition, u"V==2"_s);
    EXPECT_EQ(include.conditions.at(0).headerName, include.headerName);
    told.clear();
    EXPECT_EQ(entry(u"none.xml"_s, {}, true, true), XMDOpenSuccess);
    EXPECT_EQ(entry(u"none.xml"_s, {}, true, false), XMDOpenUnreadable);
    EXPECT_EQ(told.filter(u"Unable to open file"_s).size(), 1) << told.join(u'|').toStdString();
}

TEST(LoaderOperations, MessagesOfAHostHaveTheForm)
{
    Host host;
    host.loader.ErrorMessage(u"a.xml"_s, 1, 2, u"wrong"_s);
    host.loader.WarningMessage(u"a.xml"_s, 3, 4, u"odd"_s);
    host.loader.LogMessage(u"a.xml"_s, 5, 6, u"seen"_s);
    EXPECT_EQ(told, QStringList({u"a.xml:1:2:wrong"_s, u"a.xml:3:4:odd"_s, u"a.xml:5:6:seen"_s}));
    const VMMemoryMapLoader silent; // which has loaded nothing, and so has nobody to tell
    silent.ErrorMessage(u"wrong"_s);
    silent.WarningMessage(u"odd"_s);
    silent.LogMessage(u"seen"_s);
    EXPECT_EQ(told.size(), 3);
}
