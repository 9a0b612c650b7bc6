#include "expression/evaluation_context.h"

#include "expression/variant.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

using variant::Variant;

namespace cexev {

namespace {

/// Whether \a signature takes the arguments, position by position; position 0 is the result and takes any call.
bool fitsSignature(const char *signature, int argc, Variant **argv)
{
    for (int position = 0; position <= argc; ++position) {
        const char wanted = signature[position];
        if (wanted == '*')
            return true;
        if (wanted == '\0')
            return false;
        if (position > 0 && wanted != '?' && wanted != argv[position - 1]->getTypeChar())
            return false;
    }
    return argc >= 0 && signature[argc + 1] == '\0';
}

std::uint32_t bitsOf(const Variant &integer)
{
    return integer.getType() == Variant::kInt ? static_cast<std::uint32_t>(integer.getInt())
                                              : static_cast<std::uint32_t>(integer.getDWORD());
}

int joinTexts(const Variant &left, const Variant &right, Variant &result)
{
    std::string tail;
    right.asString(tail);
    std::string text;
    // Long texts are built by appending to their left end again and again: room for both saves a second copy of it.
    text.reserve(static_cast<std::size_t>(left.getSize()) + tail.size());
    left.asString(text);
    text += tail;
    result.setString(std::move(text));
    return 1;
}

} // namespace

const CExEvCtx::SFunctionDef CExEvCtx::m_stdFuncDef[] = {
    {"sin", "R?", "Sinus", fnSin},
    {nullptr, nullptr, nullptr, nullptr},
};

const CExEvCtx::SFunctionDef CExEvCtx::m_stdOpDef[] = {
    {"+", "??", "Unary plus", opUnaryPlus},
    {"-", "??", "Unary minus", opUnaryMinus},
    {"~", "??", "Unary bitnot", opUnaryBitNot},
    {"!", "??", "Unary not", opUnaryLogNot},
    {"+", "S?S", "Append string", opPlusS_S},
    {"+", "SS?", "Append to string", opPlusSS_},
    {"*", "???", "Mul", opMul},
    {"/", "???", "Div", opDiv},
    {"%", "???", "Mod", opMod},
    {"+", "???", "Add", opAdd},
    {"-", "???", "Sub", opSub},
    {"<<", "???", "Bitleft", opBitLeft},
    {">>", "???", "Bitright", opBitRight},
    {"<", "???", "LT", opLT},
    {">", "???", "GT", opGT},
    {"<=", "???", "LE", opLE},
    {">=", "???", "GE", opGE},
    {"==", "???", "EQ", opEQ},
    {"!=", "???", "NE", opNE},
    {"&", "???", "BitAnd", opBitAnd},
    {"^", "???", "BitXor", opBitXor},
    {"|", "???", "BitOr", opBitOr},
    {"&&", "???", "LogAnd", opLogAnd},
    {"||", "???", "LogOr", opLogOr},
    {nullptr, nullptr, nullptr, nullptr},
};

CExEvCtx::CExEvCtx() = default;

CExEvCtx::~CExEvCtx() = default;

int CExEvCtx::isValidIdentStartChar(int c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ? 1 : 0;
}

int CExEvCtx::isValidIdentChar(int c)
{
    const bool isDigit = c >= '0' && c <= '9';
    return isValidIdentStartChar(c) || isDigit || c == '.' || c == ':' || c == '?' ? 1 : 0;
}

int CExEvCtx::getValue(const char *name, Variant &result)
{
    if (std::strcmp(name, "pi") != 0) {
        result.setNull();
        return 0;
    }
    result.setReal(3.141592653); // descriptions were written against these ten digits
    return 1;
}

int CExEvCtx::callFunction(const char *name, int argc, Variant **argv, Variant &result)
{
    return doCallFunction(m_stdFuncDef, name, argc, argv, result);
}

int CExEvCtx::callOperator(const char *name, int argc, Variant **argv, Variant &result)
{
    return doCallFunction(m_stdOpDef, name, argc, argv, result);
}

int CExEvCtx::doCallFunction(const SFunctionDef *table, const char *name, int argc, Variant **argv, Variant &result)
{
    result.setNull();
    for (const SFunctionDef *row = table; row->name; ++row) {
        if (std::strcmp(row->name, name) == 0 && fitsSignature(row->signature, argc, argv))
            return row->handler(argc, argv, result);
    }
    return 0;
}

int CExEvCtx::funcDefine(const char *, const char *, Handler, int)
{
    return 0;
}

void CExEvCtx::funcFree() {}

int CExEvCtx::fnSin(int, Variant **argv, Variant &result)
{
    double radians = 0.0;
    if (!argv[0]->asReal(radians))
        return 0;
    result.setReal(std::sin(radians));
    return 1;
}

int CExEvCtx::opUnaryPlus(int, Variant **argv, Variant &result)
{
    switch (argv[0]->getType()) {
    case Variant::kBool:
    case Variant::kInt:
    case Variant::kDWord:
    case Variant::kReal:
        result = *argv[0];
        return 1;
    case Variant::kNull:
    case Variant::kString:
    case Variant::kBinary:
    case Variant::kPtr:
        break;
    }
    return 0;
}

int CExEvCtx::opUnaryMinus(int, Variant **argv, Variant &result)
{
    const Variant &operand = *argv[0];
    switch (operand.getType()) {
    case Variant::kBool:
        result.setInt(static_cast<std::int32_t>(0u - static_cast<std::uint32_t>(operand.getBool())));
        return 1;
    case Variant::kInt:
        result.setInt(static_cast<std::int32_t>(0u - bitsOf(operand)));
        return 1;
    case Variant::kDWord:
        result.setDWORD(0u - bitsOf(operand));
        return 1;
    case Variant::kReal:
        result.setReal(-operand.getReal());
        return 1;
    case Variant::kNull:
    case Variant::kString:
    case Variant::kBinary:
    case Variant::kPtr:
        break;
    }
    return 0;
}

int CExEvCtx::opUnaryBitNot(int, Variant **argv, Variant &result)
{
    const Variant &operand = *argv[0];
    if (operand.getType() == Variant::kInt)
        result.setInt(static_cast<std::int32_t>(~bitsOf(operand)));
    else if (operand.getType() == Variant::kDWord)
        result.setDWORD(~bitsOf(operand));
    else
        return 0;
    return 1;
}

int CExEvCtx::opUnaryLogNot(int, Variant **argv, Variant &result)
{
    int truth = 0;
    if (!argv[0]->asBool(truth))
        return 0;
    result.setBool(truth ? 0 : 1);
    return 1;
}

// Appending to a text and appending a text join in the same way; the two rows keep them ahead of the addition.
int CExEvCtx::opPlusS_S(int, Variant **argv, Variant &result)
{
    return joinTexts(*argv[0], *argv[1], result);
}

int CExEvCtx::opPlusSS_(int, Variant **argv, Variant &result)
{
    return joinTexts(*argv[0], *argv[1], result);
}

int CExEvCtx::opMul(int, Variant **argv, Variant &result)
{
    return Variant::MUL(*argv[0], *argv[1], result);
}

int CExEvCtx::opDiv(int, Variant **argv, Variant &result)
{
    return Variant::DIV(*argv[0], *argv[1], result);
}

int CExEvCtx::opMod(int, Variant **argv, Variant &result)
{
    return Variant::MOD(*argv[0], *argv[1], result);
}

int CExEvCtx::opAdd(int, Variant **argv, Variant &result)
{
    return Variant::ADD(*argv[0], *argv[1], result);
}

int CExEvCtx::opSub(int, Variant **argv, Variant &result)
{
    return Variant::SUB(*argv[0], *argv[1], result);
}

int CExEvCtx::opBitLeft(int, Variant **argv, Variant &result)
{
    return Variant::BITLEFT(*argv[0], *argv[1], result);
}

int CExEvCtx::opBitRight(int, Variant **argv, Variant &result)
{
    return Variant::BITRIGHT(*argv[0], *argv[1], result);
}

int CExEvCtx::opLT(int, Variant **argv, Variant &result)
{
    return Variant::LT(*argv[0], *argv[1], result);
}

int CExEvCtx::opGT(int, Variant **argv, Variant &result)
{
    return Variant::GT(*argv[0], *argv[1], result);
}

int CExEvCtx::opLE(int, Variant **argv, Variant &result)
{
    return Variant::LE(*argv[0], *argv[1], result);
}

int CExEvCtx::opGE(int, Variant **argv, Variant &result)
{
    return Variant::GE(*argv[0], *argv[1], result);
}

int CExEvCtx::opEQ(int, Variant **argv, Variant &result)
{
    return Variant::EQ(*argv[0], *argv[1], result);
}

int CExEvCtx::opNE(int, Variant **argv, Variant &result)
{
    return Variant::NE(*argv[0], *argv[1], result);
}

int CExEvCtx::opBitAnd(int, Variant **argv, Variant &result)
{
    return Variant::BITAND(*argv[0], *argv[1], result);
}

int CExEvCtx::opBitXor(int, Variant **argv, Variant &result)
{
    return Variant::BITXOR(*argv[0], *argv[1], result);
}

int CExEvCtx::opBitOr(int, Variant **argv, Variant &result)
{
    return Variant::BITOR(*argv[0], *argv[1], result);
}

int CExEvCtx::opLogAnd(int, Variant **argv, Variant &result)
{
    return Variant::LOGAND(*argv[0], *argv[1], result);
}

int CExEvCtx::opLogOr(int, Variant **argv, Variant &result)
{
    return Variant::LOGOR(*argv[0], *argv[1], result);
}

} // namespace cexev
