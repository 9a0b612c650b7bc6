#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/visit.h"

using namespace Qt::StringLiterals;

namespace {

/// The place as messages write it, the file without its directory.
QString at(const veldmap::SourcePlace &source)
{
    const veldmap::Place place = source.place();
    return u"%1:%2:%3"_s.arg(place.file.section(u'/', -1), QString::number(place.line), QString::number(place.column));
}

} // namespace

// A place is behind the ">" of the start tag, counted as messages count it.
TEST(Places, EverythingKnowsItsTag)
{
    const Loaded soc({{u"soc.xml"_s, uR"xml(<archive>
 <include file="uart.xml"><comment>c</comment></include>
 <include file="no.xml" load="no"><case cond="1" file="b.xml"/></include>
 <instance name="U"
   type="uart"/>
</archive>)xml"_s},
                      {u"uart.xml"_s, uR"xml(<archive>
 <var name="V" value="1"/>
 <range name="R" left="1" right="0"/>
 <spacer/>
 <enum name="e"><entry name="E0"/>
  <bound name="B"/></enum>
 <typedef name="t"><uint8 name="x"/></typedef>
 <module name="uart">
  <reg name="ctrl" count="2"><bits name="f" pos="3:0" cut="2"><options>
     <option name="o" value="1"/></options></bits>
   <bits name="g" pos="4"><options linkenum="e"/></bits></reg>
  <hole/>
  <struct name="s"><ptr name="p" type="t"/></struct>
  <instance name="i" type="t"/>
  <memory name="m" size="4"/>
 </module>
 <alias name="a"><uint name="u"/></alias>
</archive>)xml"_s}});
    ASSERT_TRUE(soc.isLoaded());
    const VMXMLArchive &uart = soc.archiveAt(1);
    const VMVariableManager &variables = *uart.variables;
    const auto &module = soc.type<VMStruct>(u"uart"_s);
    const auto memberAt = [&](std::size_t place) { return module.memberList.at(place).get(); };
    const auto &array = *elementCast<VMArray>(memberAt(0));
    const auto &ctrl = *elementCast<VMValuable>(array.memberList.at(1).get());
    const auto &instance = *elementCast<VMStruct>(soc.root().instances.at(0).get());

    const struct {
        const char *what;
        QString place;
        QString expected;
    } rows[] = {
        {"root file", at(soc.archiveAt(0).source), u"soc.xml:1:9"_s},
        {"archive", at(uart.source), u"uart.xml:1:9"_s},
        {"include", at(soc.archiveAt(0).includes.at(0).source), u"soc.xml:2:26"_s},
        {"condition", at(soc.archiveAt(0).includes.at(1).conditions.at(0).source), u"soc.xml:3:63"_s},
        {"variable", at(variables.at(0).source), u"uart.xml:2:26"_s},
        {"range", at(variables.at(1).source), u"uart.xml:3:37"_s},
        {"spacer", at(variables.at(2).source), u"uart.xml:4:10"_s},
        {"entry", at(variables.at(3).source), u"uart.xml:5:34"_s},
        {"entry of its enum", at(variables.enums.at(0)->at(0).source), u"uart.xml:5:34"_s},
        {"enum", at(variables.enums.at(0)->source), u"uart.xml:5:16"_s},
        {"enum as a type", at(soc.type<VMValuable>(u"e"_s).source), u"uart.xml:5:16"_s},
        {"bound", at(variables.at(4).source), u"uart.xml:6:19"_s},
        {"module", at(module.source), u"uart.xml:8:21"_s},
        {"array", at(array.source), u"uart.xml:9:29"_s},
        {"prototype", at(array.prototype->source), u"uart.xml:9:29"_s},
        {"member", at(ctrl.source), u"uart.xml:9:29"_s},
        {"field", at(ctrl.bitFields.at(0)->source), u"uart.xml:9:62"_s},
        {"piece", at(ctrl.bitFields.at(1)->source), u"uart.xml:9:62"_s},
        {"option", at(ctrl.bitFields.at(0)->options.optionList.at(0).source), u"uart.xml:10:33"_s},
        {"option of an enum", at(ctrl.bitFields.at(2)->options.optionList.at(0).source), u"uart.xml:5:34"_s},
        {"hole", at(memberAt(1)->source), u"uart.xml:12:9"_s},
        {"struct", at(memberAt(2)->source), u"uart.xml:13:19"_s},
        {"pointer", at(elementCast<VMStruct>(memberAt(2))->memberList.at(0)->source), u"uart.xml:13:43"_s},
        {"inner instance", at(memberAt(3)->source), u"uart.xml:14:31"_s},
        {"in an inner instance", at(elementCast<VMStruct>(memberAt(3))->memberList.at(0)->source), u"uart.xml:7:36"_s},
        {"memory", at(memberAt(4)->source), u"uart.xml:15:29"_s},
        {"alias", at(soc.root().getTemplate(u"a"_s)->source), u"uart.xml:17:17"_s},
        {"instance", at(instance.source), u"soc.xml:5:16"_s},
        {"in an instance", at(instance.memberList.at(1)->source), u"uart.xml:12:9"_s},
    };
    for (const auto &row : rows)
        EXPECT_EQ(row.place, row.expected) << row.what;
    EXPECT_TRUE(VMUnsignedInt8(u"made by hand"_s).source.place().isNull());
}
