#pragma once

#include "model/element.h"
#include <veldmap/veldmap_export.h>

#include <QStringView>

#include <array>
#include <memory>
#include <span>

class VMValuable;

/// The kinds of scalars: what names each of them in a description and in what is made of it.
///
/// A further kind is its class, its number in XMLElementType, its case in visit() and one row in kinds.cpp; all that
/// asks for words, widths or classes looks them up here.
namespace veldmap {

/// Where a word stands for a kind. A word may have several uses.
enum WordUse : unsigned {
    kMemberTag = 1,   ///< the tag of a member in a module or structure
    kPointedType = 2, ///< what a pointer points to, and what allocateElementFromTypeName() makes
    kFoldedType = 4,  ///< a pointer's tag may write it in letters of any case
    kCType = 8,       ///< C code has a type of that name in upper case; all other types of a description end in "_T"
    kAnyUse = kMemberTag | kPointedType | kFoldedType | kCType
};

struct KindWord {
    QLatin1StringView word;
    unsigned uses = 0;
};

struct ScalarKind {
    VMXMLElement::XMLElementType type;
    QLatin1StringView kindWord;    ///< the kind in the JSON of a tree: "register32"
    QStringView typeWord;          ///< what getTypeString() gives without a typedef: "Reg32"
    std::array<KindWord, 2> words; ///< the second is empty where descriptions have one word only
    int bits;
    bool isSigned;
    bool isBusRegister;          ///< a hardware register that the memory bus reaches as a word of its own
    QLatin1StringView rubyClass; ///< its console class behind a pointer; empty for what no pointer reaches by a word
    /// A new element. Software can always read and write its own integers, whatever the arguments say.
    std::unique_ptr<VMValuable> (*make)(const QString &name, bool readable, bool writable);
};

/// The word of the one type that every description knows and that is no scalar: a memory without a size. It may stand
/// where kPointedType, kFoldedType and kCType words may.
inline constexpr QLatin1StringView kMemoryWord("memory");

/// All rows.
VELDMAP_EXPORT std::span<const ScalarKind> scalarKinds();
/// The row of that number, null for an element that is no scalar.
VELDMAP_EXPORT const ScalarKind *scalarKindOf(VMXMLElement::XMLElementType type);
/// The row that has \a word, letter by letter, for one of \a uses; null when there is none.
VELDMAP_EXPORT const ScalarKind *scalarKindNamed(QStringView word, unsigned uses);

/// The kind of any element in the JSON of a tree: that of the row, or "struct", "array", ...
VELDMAP_EXPORT QLatin1StringView kindWordOf(VMXMLElement::XMLElementType type);

} // namespace veldmap
