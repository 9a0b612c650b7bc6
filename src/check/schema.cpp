#include "check/schema.h"

#include "text/words.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

using enum TagKind;
using Value = ValueKind;

template <typename... Kinds>
constexpr quint32 in(Kinds... kinds)
{
    return ((quint32(1) << static_cast<unsigned>(kinds)) | ...);
}

constexpr quint32 kInStructures = in(Type, Struct);
constexpr quint32 kInTypes = in(Type, Struct, Alias);
constexpr quint32 kInFiles = in(Archive, Type);
constexpr quint32 kWithComment = in(Archive, Include, Variable, Range, Enum, EnumEntry, EnumBound, Spacer, Type, Struct,
                                    Alias, Memory, Pointer, Register, Integer, Field, Option);

// clang-format off
constexpr AttributeRow kArchive[] = {{"asm"_L1, Value::Flag}, {"vhdlpkg"_L1, Value::Text}, {"relative"_L1, Value::Text}};
constexpr AttributeRow kInclude[] = {{"file"_L1, Value::Text}, {"optional"_L1, Value::Flag}, {"load"_L1, Value::Flag},
                                     {"cond"_L1, Value::Unused}};
constexpr AttributeRow kIncludeCase[] = {{"cond"_L1, Value::Condition}, {"file"_L1, Value::Text},
                                         {"optional"_L1, Value::Flag}, {"load"_L1, Value::Unused}};
constexpr AttributeRow kIncludeDefault[] = {{"file"_L1, Value::Text}, {"optional"_L1, Value::Flag},
                                            {"load"_L1, Value::Unused}, {"cond"_L1, Value::Unused}};
constexpr AttributeRow kVariable[] = {{"name"_L1, Value::Name}, {"value"_L1, Value::CNumber}, {"global"_L1, Value::Flag}};
constexpr AttributeRow kRange[] = {{"name"_L1, Value::Name}, {"left"_L1, Value::Number}, {"right"_L1, Value::Number},
                                   {"dir"_L1, Value::Text}, {"global"_L1, Value::Unused}};
constexpr AttributeRow kEnum[] = {{"name"_L1, Value::Name}, {"global"_L1, Value::Unused}};
constexpr AttributeRow kEnumEntry[] = {{"name"_L1, Value::Name}, {"value"_L1, Value::CNumber},
                                       {"global"_L1, Value::Unused}};
constexpr AttributeRow kEnumBound[] = {{"name"_L1, Value::Name}, {"value"_L1, Value::Unused},
                                       {"global"_L1, Value::Unused}};
constexpr AttributeRow kType[] = {{"name"_L1, Value::RawName}, {"category"_L1, Value::Text},
                                  {"ckeywords"_L1, Value::Text}, {"rubyconstants"_L1, Value::Flag},
                                  {"count"_L1, Value::Unused}, {"address"_L1, Value::Unused}};
constexpr AttributeRow kStruct[] = {{"name"_L1, Value::Name}, {"count"_L1, Value::Count}, {"ckeywords"_L1, Value::Text},
                                    {"category"_L1, Value::Unused}, {"address"_L1, Value::Unused}};
constexpr AttributeRow kAlias[] = {{"name"_L1, Value::RawName}, {"count"_L1, Value::Unused},
                                   {"category"_L1, Value::Unused}};
constexpr AttributeRow kHole[] = {{"size"_L1, Value::Number}, {"name"_L1, Value::Unused}, {"count"_L1, Value::Unused}};
constexpr AttributeRow kMemory[] = {{"name"_L1, Value::Name}, {"size"_L1, Value::Number}, {"ckeywords"_L1, Value::Text},
                                    {"count"_L1, Value::Unused}, {"protect"_L1, Value::Unused}};
constexpr AttributeRow kPointer[] = {{"name"_L1, Value::Name}, {"type"_L1, Value::Text}, {"count"_L1, Value::Count},
                                     {"ckeywords"_L1, Value::Text}, {"protect"_L1, Value::Unused}};
constexpr AttributeRow kMemberInstance[] = {{"name"_L1, Value::Name}, {"type"_L1, Value::Text}, {"count"_L1, Value::Count},
                                            {"ckeywords"_L1, Value::Text}, {"address"_L1, Value::Unused},
                                            {"category"_L1, Value::Unused}};
constexpr AttributeRow kPlacedInstance[] = {{"name"_L1, Value::RawName}, {"type"_L1, Value::Text},
                                            {"address"_L1, Value::Address}, {"category"_L1, Value::Text},
                                            {"count"_L1, Value::Unused}, {"ckeywords"_L1, Value::Unused}};
constexpr AttributeRow kRegister[] = {{"name"_L1, Value::Name}, {"protect"_L1, Value::Protection},
                                      {"count"_L1, Value::Count}, {"display"_L1, Value::Display},
                                      {"ckeywords"_L1, Value::Text}};
constexpr AttributeRow kInteger[] = {{"name"_L1, Value::Name}, {"count"_L1, Value::Count}, {"display"_L1, Value::Display},
                                     {"ckeywords"_L1, Value::Text}, {"protect"_L1, Value::Unused}};
constexpr AttributeRow kHalf[] = {{"name"_L1, Value::RawName}};
constexpr AttributeRow kField[] = {{"name"_L1, Value::Name}, {"pos"_L1, Value::Text}, {"access"_L1, Value::Access},
                                   {"rst"_L1, Value::Reset}, {"display"_L1, Value::Display}, {"cut"_L1, Value::Text},
                                   {"cutprefix"_L1, Value::CutDetail}, {"cutstart"_L1, Value::CutDetail},
                                   {"cutenum"_L1, Value::CutDetail}};
constexpr AttributeRow kOptions[] = {{"linkenum"_L1, Value::Text}};
constexpr AttributeRow kOption[] = {{"name"_L1, Value::Name}, {"value"_L1, Value::Number}};
constexpr AttributeRow kBitgroup[] = {{"name"_L1, Value::Name}};
constexpr AttributeRow kBitgroupEntry[] = {{"ref"_L1, Value::Text}};

/// What descriptions are mostly made of stands in front.
constexpr TagRow kTags[] = {
    {"comment"_L1, Comment, kWithComment, {}},
    {"bits"_L1, Field, in(Register, Integer), kField},
    {"option"_L1, Option, in(Options), kOption},
    {"options"_L1, Options, in(Field), kOptions},
    {"reg32"_L1, Register, kInTypes, kRegister},
    {"reg"_L1, Register, kInTypes, kRegister},
    {"reg16"_L1, Register, kInTypes, kRegister},
    {"reg8"_L1, Register, kInTypes, kRegister},
    {"hole"_L1, Hole, kInStructures, kHole},
    {"mask"_L1, OptionsMark, in(Options), {}},
    {"shift"_L1, OptionsMark, in(Options), {}},
    {"default"_L1, OptionsMark, in(Options), {}},
    {"instance"_L1, PlacedInstance, in(Archive), kPlacedInstance},
    {"instance"_L1, MemberInstance, kInTypes, kMemberInstance},
    {"include"_L1, Include, in(Archive), kInclude},
    {"var"_L1, Variable, kInFiles, kVariable},
    {"entry"_L1, EnumEntry, in(Enum), kEnumEntry},
    {"entry"_L1, BitgroupEntry, in(Bitgroup), kBitgroupEntry},
    {"struct"_L1, Struct, kInTypes, kStruct},
    {"module"_L1, Type, in(Archive, Document), kType},
    {"typedef"_L1, Type, in(Archive), kType},
    {"archive"_L1, Archive, in(Document, BigArchive), kArchive},
    {"bigarchive"_L1, BigArchive, in(Document), {}},
    {"enum"_L1, Enum, kInFiles, kEnum},
    {"bound"_L1, EnumBound, in(Enum), kEnumBound},
    {"range"_L1, Range, kInFiles, kRange},
    {"spacer"_L1, Spacer, kInFiles, {}},
    {"bitgroup"_L1, Bitgroup, in(Register, Integer), kBitgroup},
    {"l"_L1, Half, in(Register, Integer), kHalf},
    {"h"_L1, Half, in(Register, Integer), kHalf},
    {"alias"_L1, Alias, in(Archive), kAlias},
    {"memory"_L1, Memory, kInStructures, kMemory},
    {"ptr"_L1, Pointer, kInTypes, kPointer},
    {"ireg"_L1, Register, kInTypes, kRegister},
    {"uint"_L1, Integer, kInTypes, kInteger},
    {"uint32"_L1, Integer, kInTypes, kInteger},
    {"uint16"_L1, Integer, kInTypes, kInteger},
    {"uint8"_L1, Integer, kInTypes, kInteger},
    {"int"_L1, Integer, kInTypes, kInteger},
    {"int32"_L1, Integer, kInTypes, kInteger},
    {"int16"_L1, Integer, kInTypes, kInteger},
    {"int8"_L1, Integer, kInTypes, kInteger},
    {"bool"_L1, Integer, kInTypes, kInteger},
    {"case"_L1, IncludeCase, in(Include), kIncludeCase},
    {"default"_L1, IncludeDefault, in(Include), kIncludeDefault},
    {"cjoker"_L1, CJoker, in(Archive), {}},
};
// clang-format on

} // namespace

const AttributeRow *TagRow::findAttribute(QStringView attribute) const
{
    const auto found =
        std::ranges::find_if(attributes, [&](const AttributeRow &row) { return isWord(attribute, row.name); });
    return found == attributes.end() ? nullptr : &*found;
}

const TagRow *findTagRow(TagKind parent, QStringView name)
{
    const auto found = std::ranges::find_if(
        kTags, [&](const TagRow &row) { return (row.parents & in(parent)) != 0 && isWord(name, row.name); });
    return found == std::end(kTags) ? nullptr : found;
}

QStringList tagNamesIn(TagKind parent)
{
    QStringList names;
    for (const TagRow &row : kTags) {
        if ((row.parents & in(parent)) != 0)
            names += row.name;
    }
    return names;
}

bool passesOverTags(TagKind kind)
{
    return (in(kind)&in(IncludeCase, IncludeDefault, Variable, Range, EnumEntry, EnumBound, Spacer, Hole,
                        MemberInstance, PlacedInstance, Half, OptionsMark, BitgroupEntry)) != 0;
}

} // namespace veldmap
