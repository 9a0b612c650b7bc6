// Operations on elements that hosts have and that no generator of ours asks for.

#include "support/loaded.h"

#include "access/completion.h"
#include "expression/evaluation_context.h"
#include "expression/evaluator.h"
#include "model/aggregates.h"
#include "model/bitfield.h"
#include "model/pointer.h"
#include "model/scalars.h"

#include <QRegularExpression>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

Loaded chip()
{
    return Loaded::archive(
        u"<comment>Chip</comment><var name='N' value='2'/><typedef name='node'><ptr name='next' type='node'/></typedef>"
        "<module name='m'><reg name='r'><bits name='f' pos='0'/><bits name='g' pos='1'/><bitgroup name='fg'>"
        "<entry ref='f'/><entry ref='g'/></bitgroup></reg><ireg name='i' count='N'/><instance name='n' type='node'/>"
        "<memory name='ram' size='8'/><hole size='32'/></module><module name='inner'><ireg name='i'/></module>"
        "<instance name='M' type='m' address='0x1000'/>"_s);
}

/// What dumpInfo prints, and the size it gives as a last line.
QStringList dumped(const VMXMLElement &element)
{
    testing::internal::CaptureStdout();
    const int size = element.dumpInfo(0);
    std::fflush(stdout);
    QStringList lines = QString::fromStdString(testing::internal::GetCapturedStdout()).split(u'\n', Qt::SkipEmptyParts);
    for (QString &line : lines) // the sizes are those of this machine's objects
        size > 0 ? line.replace(QRegularExpression(u"\\d+ "_s), u"SIZE "_s) : line;
    return lines;
}

} // namespace

TEST(Published, ElementsTellWhatTheyAre)
{
    const Loaded soc = chip();
    VMXMLArchive &archive = soc.archiveAt(0);
    auto &module = soc.type<VMStruct>(u"m"_s);
    EXPECT_EQ(archive.getTypeString() + u' ' + soc.root().getTypeString(), u"archive rootarchive"_s);
    EXPECT_EQ(archive.getComment(), u"Chip"_s);
    EXPECT_EQ(archive.sizeOf() + archive.getAlignConstraint() + soc.root().sizeOf() + soc.root().getAlignConstraint(),
              0);
    EXPECT_TRUE(soc.type<VMStruct>(u"inner"_s).hasInternalRegisters());
    EXPECT_FALSE(module.hasInternalRegisters());
    EXPECT_TRUE(VMStruct(u"s"_s, u"s"_s).isRootStruct());
    EXPECT_FALSE(elementCast<VMStruct>(module.memberList.at(2).get())->isRootStruct());
    const auto &array = *elementCast<VMArray>(module.memberList.at(1).get());
    EXPECT_EQ(array.memberList.at(1)->getArrayNumber(), 1);
    const auto &valuable = *elementCast<VMValuable>(module.memberList.at(0).get());
    EXPECT_EQ(valuable.bitFields.at(0)->getTypeString(), u"Bitfield"_s);
    EXPECT_EQ(valuable.getBitGroupByName(u"none"_s), nullptr);

    EXPECT_EQ(dumped(module).join(u' '),
              u"SIZE   |_SIZE r   |_SIZE f   |_SIZE g  |_SIZE i   |_SIZE i[0]   |_SIZE i[1]  |_SIZE n   |_SIZE next "
              "NO INFO NO INFO"_s);
    EXPECT_EQ(dumped(soc.root()).size(), 1 + dumped(module).size());
    EXPECT_EQ(dumped(archive).size(), 1 + 2 + dumped(module).size() + 2);
    EXPECT_EQ(dumped(VMBitField(*valuable.bitFields.at(0))), QStringList(u"SIZE f"_s));
}

TEST(Published, TextsOfParts)
{
    const Loaded soc = chip();
    const auto &module = soc.type<VMStruct>(u"m"_s);
    const auto &valuable = *elementCast<VMValuable>(module.memberList.at(0).get());
    const VMBitGroup &group = *valuable.getBitGroupByName(u"fg"_s);
    const VMBitField &field = *valuable.bitFields.at(0);
    const QString header = soc.archiveAt(0).c_content();
    const QString package = module.vhdl_content();
    QStringList seen;
    const QString macros = group.macro_serialize(u"M"_s, seen);
    EXPECT_EQ(macros.count(u'\n'), 3);
    const std::pair<QString, QString> parts[] = {
        {header, macros},
        {header, valuable.c_serialize(1)},
        {header, soc.root().c_getMatchingInstancesBaseAddresses(&module)},
        {header, module.c_content()},
        {soc.archiveAt(0).asm_content(), soc.root().c_getMatchingInstancesAsmDescription(&module)},
        {package, field.vhdl_logical_serialize(2, seen)},
        {package, field.vhdl_physical_serialize(2, seen)},
        {package, group.vhdl_logical_serialize(2, seen)},
        {package, group.vhdl_physical_serialize(2, seen)},
    };
    for (const auto &[whole, part] : parts) {
        EXPECT_FALSE(part.trimmed().isEmpty());
        EXPECT_TRUE(whole.contains(part.trimmed())) << part.toStdString() << "in\n" << whole.toStdString();
    }
    EXPECT_TRUE(field.c_serialize(1).isEmpty()); // which is no member
    EXPECT_TRUE(field.vhdl_content().isEmpty()); // and no module
}

TEST(Published, PathsInPieces)
{
    const Loaded soc = chip();
    VMXMLElement *instance = soc.root().instances.at(0).get();
    EXPECT_EQ(instance->getElementFromPathTokens({}), nullptr);
    EXPECT_EQ(instance->getElementFromPathTokens({u"M"_s, u"r"_s, u"f"_s})->getPath(), u"$M.r.f"_s);
    EXPECT_EQ(instance->getElementFromPathTokens({u"M"_s, u"x"_s}), nullptr);
    EXPECT_FALSE(instance->getCompletionListFromTokens({u"r"_s}).isEmpty());
}

TEST(Published, ExpressionsBecomeVariables)
{
    const Loaded soc = chip();
    VMVariableManager &variables = *soc.archiveAt(0).variables;
    QString message;
    bool failed = false;
    EXPECT_EQ(variables.evalExpressionAndAddVar(u"A"_s, u"N+1"_s, u"three"_s, nullptr, message, failed), 3);
    EXPECT_FALSE(failed);
    EXPECT_EQ(variables.findVariable(u"A"_s)->leftExpression + variables.findVariable(u"A"_s)->comment, u"N+1three"_s);
    EXPECT_EQ(variables.evalExpressionAndAddRange(u"R"_s, u"A"_s, u"0"_s, VMIntVar::up, {}, message, failed), 3);
    EXPECT_FALSE(failed);
    EXPECT_EQ(variables.last().rightExpression + QString::number(variables.last().dir), u"00"_s);
    const qsizetype before = variables.size();
    variables.evalExpressionAndAddVar(u"B"_s, u"X"_s, {}, nullptr, message, failed);
    EXPECT_TRUE(std::exchange(failed, false));
    for (const auto &[left, right] : {std::pair{u"X"_s, u"0"_s}, std::pair{u"0"_s, u"X"_s}}) {
        variables.evalExpressionAndAddRange(u"S"_s, left, right, VMIntVar::up, {}, message, failed);
        EXPECT_TRUE(std::exchange(failed, false));
    }
    EXPECT_EQ(variables.size(), before);
    EXPECT_TRUE(message.contains("Error in expression"_L1));

    cexev::CExEvCtx context; // whose functions are what they are
    EXPECT_EQ(context.funcDefine("f", "I", &cexev::CExEvCtx::fnSin, 0), 0);
    context.funcFree();
    variant::Variant result;
    EXPECT_EQ(context.callFunction("f", 0, nullptr, result), 0);
}
