// The C and assembly text of single types.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/scalars.h"

using namespace Qt::StringLiterals;

TEST(HeaderText, OfEachKindOfElement)
{
    const auto answer = [](const Loaded &soc, const QStringList &words) {
        const VMVariableManager &variables = *soc.archiveAt(0).variables;
        if (words.first() == u"enum"_s)
            return variables.enums.at(0)->c_serialize(0);
        if (words.first() == u"variables"_s) {
            QString text;
            for (const VMIntVar &variable : variables.sliced(words.at(1).toInt()))
                text += variable.c_serialize(false);
            return text;
        }
        const VMXMLElement *type = soc.root().getTemplate(words.at(1));
        QStringList used;
        if (words.first() == u"typedef"_s)
            return type->c_typedefSerialize();
        if (words.first() == u"macros"_s)
            return type->macro_serialize(words.at(1).toUpper(), used);
        testing::internal::CaptureStdout();
        const QString text = words.first() == u"addresses"_s ? type->asm_content()
                                                             : soc.root().c_getMatchingInstancesInstanciation(type);
        return text + u"stdout: "_s + QString::fromStdString(testing::internal::GetCapturedStdout());
    };
    expectCases(u"headers/types.txt"_s, answer);
    expectCases(u"headers/macros.txt"_s, answer);
}

TEST(HeaderText, UsedNamesTravel)
{
    const Loaded soc = Loaded::archive(u"<alias name='a'><reg name='r'><bits name='f' pos='0'/></reg></alias>"_s);
    QStringList used = {u"A_F"_s};
    EXPECT_EQ(soc.root().getTemplate(u"a"_s)->macro_serialize(u"A"_s, used),
              u"//r\n//#define A_F                       (1<<0)\n\n"_s);
    EXPECT_EQ(used, QStringList(u"A_F"_s));
    EXPECT_EQ(soc.type<VMValuable>(u"a"_s).bitFields.at(0)->macro_serialize(u"B"_s, used),
              u"#define B_F                         (1<<0)\n"_s);
    EXPECT_EQ(used, QStringList({u"A_F"_s, u"B_F"_s}));
}
