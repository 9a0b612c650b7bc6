#pragma once

#include <veldmap/veldmap_export.h>

#include <QLatin1StringView>
#include <QStringList>
#include <QStringView>

#include <span>

/// What a description may consist of: its tags, where each may stand, and what its attributes may be. Editors have it
/// as schema/veldmap.xsd, and a test holds the two together.
namespace veldmap {

/// What a tag means, which its name alone does not say: an `entry` of an enum is not one of a bitgroup.
enum class TagKind : quint8 {
    Document, ///< no tag: what the root stands in
    BigArchive,
    Archive,
    Include,
    IncludeCase,
    IncludeDefault,
    CJoker,
    Comment,
    Variable,
    Range,
    Enum,
    EnumEntry,
    EnumBound,
    Spacer,
    Type, ///< module or typedef
    Struct,
    Alias,
    Hole,
    Memory,
    Pointer,
    MemberInstance,
    PlacedInstance,
    Register,
    Integer,
    Half, ///< l or h
    Field,
    Options,
    Option,
    OptionsMark, ///< default, mask or shift
    Bitgroup,
    BitgroupEntry,
};

/// What the value of an attribute may be.
enum class ValueKind : quint8 {
    Name,       ///< becomes an identifier
    RawName,    ///< has to be one as it is written
    Text,       ///< anything; also a reference, which the loader looks up
    Number,     ///< an expression of which only the number counts
    CNumber,    ///< an expression whose text stands in C
    Address,    ///< a Number
    Condition,  ///< an expression whose text stands behind #if
    Count,      ///< a CNumber, or the word notanarray
    Flag,       ///< yes or no
    Protection, ///< letters of rw
    Access,     ///< letters of rwsc
    Display,    ///< hex, bin or dec
    Reset,      ///< a literal, all1, no or -
    CutDetail,  ///< is of use beside the attribute cut alone
    Unused,     ///< the tag does not look at it, though others do
};

struct AttributeRow {
    QLatin1StringView name;
    ValueKind value;
};

struct VELDMAP_EXPORT TagRow {
    QLatin1StringView name;
    TagKind kind;
    quint32 parents; ///< a bit for each TagKind
    std::span<const AttributeRow> attributes;

    const AttributeRow *findAttribute(QStringView attribute) const;
};

/// The tag \a name, in lower case, inside \a parent; null when it may not stand there.
VELDMAP_EXPORT const TagRow *findTagRow(TagKind parent, QStringView name);

/// The names of all tags that may stand inside \a parent.
VELDMAP_EXPORT QStringList tagNamesIn(TagKind parent);

/// Whether the loader passes over what stands in a tag of \a kind and is no comment that it takes.
bool passesOverTags(TagKind kind);

} // namespace veldmap
