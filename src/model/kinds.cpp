#include "model/kinds.h"

#include "model/scalars.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

template <typename Scalar>
std::unique_ptr<VMValuable> make(const QString &name, bool readable, bool writable)
{
    if constexpr (std::is_constructible_v<Scalar, const QString &, bool, bool>)
        return std::make_unique<Scalar>(name, readable, writable);
    else
        return std::make_unique<Scalar>(name);
}

/// What a row says of a kind beside its words.
struct Traits {
    bool isBusRegister;
    QLatin1StringView rubyClass;
};
constexpr Traits kBusRegister = {true, {}};
constexpr Traits kOtherBusRegister = {false, {}};
constexpr Traits kSigned = {false, "CHInt"_L1};
constexpr Traits kUnsigned = {false, "CHUnsignedInt"_L1};

template <typename Scalar>
constexpr ScalarKind row(VMXMLElement::XMLElementType type, QLatin1StringView kindWord, QStringView typeWord,
                         const Traits &traits, KindWord word, KindWord otherWord = {})
{
    using Storage = typename Scalar::Storage;
    return {type,
            kindWord,
            typeWord,
            {word, otherWord},
            8 * static_cast<int>(sizeof(Storage)),
            std::is_signed_v<Storage>,
            traits.isBusRegister,
            traits.rubyClass,
            make<Scalar>};
}

// C has no type for an internal register, and none that is just called REG.
constexpr unsigned kRegister = kMemberTag | kCType;
constexpr unsigned kInteger = kMemberTag | kPointedType | kFoldedType | kCType;
// "Int" in a ptr tag is a type of the description, "Int32" is not.
constexpr unsigned kShortInteger = kMemberTag | kPointedType | kCType;
constexpr unsigned kBehindPointers = kPointedType | kFoldedType | kCType;

using Element = VMXMLElement;

// clang-format off
constexpr ScalarKind kRows[] = {
    row<VMRegister32>(Element::XML_REGISTER32, "register32"_L1, u"Reg32", kBusRegister,
                      {"reg32"_L1, kRegister}, {"reg"_L1, kMemberTag}),
    row<VMRegister16>(Element::XML_REGISTER16, "register16"_L1, u"Reg16", kBusRegister,
                      {"reg16"_L1, kRegister}),
    row<VMRegister8>(Element::XML_REGISTER8, "register8"_L1, u"Reg8", kBusRegister,
                     {"reg8"_L1, kRegister}),
    row<VMInternalRegister8>(Element::XML_INTERNAL_REGISTER8, "internal_register8"_L1, u"Reg8", kOtherBusRegister,
                             {"ireg"_L1, kMemberTag}),
    row<VMInt32>(Element::XML_INT32, "int32"_L1, u"int32", kSigned,
                 {"int32"_L1, kInteger}, {"int"_L1, kShortInteger}),
    row<VMInt16>(Element::XML_INT16, "int16"_L1, u"int16", kSigned,
                 {"int16"_L1, kInteger}),
    row<VMInt8>(Element::XML_INT8, "int8"_L1, u"int8", kSigned,
                {"int8"_L1, kInteger}),
    row<VMUnsignedInt32>(Element::XML_UNSIGNED_INT32, "unsigned_int32"_L1, u"uint32", kUnsigned,
                         {"uint32"_L1, kInteger}, {"uint"_L1, kShortInteger}),
    row<VMUnsignedInt16>(Element::XML_UNSIGNED_INT16, "unsigned_int16"_L1, u"uint16", kUnsigned,
                         {"uint16"_L1, kInteger}),
    row<VMUnsignedInt8>(Element::XML_UNSIGNED_INT8, "unsigned_int8"_L1, u"uint8", kUnsigned,
                        {"uint8"_L1, kInteger}),
    row<VMBoolean>(Element::XML_BOOLEAN, "boolean"_L1, u"bool", {false, "CHBool"_L1},
                   {"bool"_L1, kInteger}),
    row<VMVoid>(Element::XML_VOID, "void"_L1, u"void", {false, "CHVoid"_L1},
                {"void"_L1, kBehindPointers}),
};

struct OtherKind {
    VMXMLElement::XMLElementType type;
    QLatin1StringView kindWord;
};
constexpr OtherKind kOtherKinds[] = {
    {Element::XML_HOLE, "hole"_L1},
    {Element::XML_VALUABLE, "valuable"_L1},
    {Element::XML_BITFIELD, "bitfield"_L1},
    {Element::XML_POINTER, "pointer"_L1},
    {Element::XML_STRUCT, "struct"_L1},
    {Element::XML_ARRAY, "array"_L1},
    {Element::XML_MEMORY, "memory"_L1},
    {Element::XML_ARCHIVE, "archive"_L1},
    {Element::XML_ROOT_ARCHIVE, "root_archive"_L1},
};
// clang-format on

} // namespace

std::span<const ScalarKind> scalarKinds()
{
    return kRows;
}

const ScalarKind *scalarKindOf(VMXMLElement::XMLElementType type)
{
    const auto found = std::ranges::find(kRows, type, &ScalarKind::type);
    return found == std::end(kRows) ? nullptr : found;
}

const ScalarKind *scalarKindNamed(QStringView word, unsigned uses)
{
    const auto isWord = [&](const KindWord &known) { return (known.uses & uses) != 0 && known.word == word; };
    const auto found =
        std::ranges::find_if(kRows, [&](const ScalarKind &kind) { return std::ranges::any_of(kind.words, isWord); });
    return found == std::end(kRows) ? nullptr : found;
}

QLatin1StringView kindWordOf(VMXMLElement::XMLElementType type)
{
    if (const ScalarKind *kind = scalarKindOf(type))
        return kind->kindWord;
    const auto found = std::ranges::find(kOtherKinds, type, &OtherKind::type);
    return found == std::end(kOtherKinds) ? QLatin1StringView() : found->kindWord;
}

} // namespace veldmap
