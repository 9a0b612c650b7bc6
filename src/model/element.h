#pragma once

#include <veldmap/model/source_place.h>
#include <veldmap/veldmap_export.h>

#include <QMap>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>

class CXMLCompletionEntry;
class VMRootArchive;
class VMXMLArchive;

/// Base of everything that can stand in a loaded description: registers, integers, pointers, bitfields, structures,
/// arrays, gaps, memories, and the archives that hold them.
///
/// An element owns nothing here; holders (a struct, an array, a pointer, a valuable, an archive, a root archive) own
/// their children and set `parent` through reparent(). Offsets are bytes from the parent's start, addresses are
/// absolute and 32 bits wide. Nothing in the family reports an error: what can't be answered is null, 0 or empty.
///
/// The operations of one output format live with that format: headers/, docsite/, vhdl/, access/. Most of them are
/// defined once for all kinds and visit the element (model/visit.h).
class VELDMAP_EXPORT VMXMLElement {
public:
    /// The kind of an element. Code switches on these numbers, which run without gaps.
    enum XMLElementType : std::uint8_t {
        XML_HOLE = 0,
        XML_VALUABLE = 1, ///< only while the base of a valuable is under construction
        XML_REGISTER32 = 2,
        XML_REGISTER16 = 3,
        XML_REGISTER8 = 4,
        XML_INTERNAL_REGISTER8 = 5,
        XML_BITFIELD = 6,
        XML_POINTER = 7,
        XML_INT32 = 8,
        XML_INT16 = 9,
        XML_INT8 = 10,
        XML_UNSIGNED_INT32 = 11,
        XML_UNSIGNED_INT16 = 12,
        XML_UNSIGNED_INT8 = 13,
        XML_BOOLEAN = 14,
        XML_STRUCT = 15,
        XML_ARRAY = 16,
        XML_MEMORY = 17,
        XML_ARCHIVE = 18,
        XML_ROOT_ARCHIVE = 19,
        XML_VOID = 20
    };

    VMXMLElement(const QString &name, XMLElementType type);
    VMXMLElement &operator=(const VMXMLElement &) = delete;

    /// Elements stand in blocks, close together: a large description has a million of them. Text:
    /// model/element_blocks.cpp.
    static void *operator new(std::size_t size);
    static void operator delete(void *element, std::size_t size) noexcept;

    virtual ~VMXMLElement();

    virtual void reparent(VMXMLElement *newParent);
    /// Moves the element to \a newOffset in its parent. Children stay where they are: their offsets are relative.
    virtual void remap(unsigned int newOffset);
    /// Size in bytes.
    virtual int sizeOf() const = 0;
    /// Alignment in bytes; 0 for an element that takes no place of its own.
    virtual int getAlignConstraint() const = 0;
    /// Size in bits.
    virtual int getBitSize() const;
    virtual const QString &getName() const;
    virtual const QString &getComment() const;
    virtual int getArrayNumber() const;
    /// Absolute address; behind a pointer it is the pointer's present value.
    virtual unsigned int getBaseAddress() const;
    virtual bool isValuable() const;
    virtual bool isStruct() const;
    virtual bool isArray() const;
    virtual bool isPointer() const;
    /// The class by which a Ruby console represents the element.
    virtual QString getRubyClassName() const;
    /// What the console classes of the children begin with.
    virtual QString getRubyPrefix() const;
    /// The dotted path by which a console addresses the element: $UART0.chan[2].enable.
    virtual QString getPath() const;
    virtual QString getCTypeString() const;
    virtual XMLElementType getType() const;
    /// The type word: the typedef's name, or the built-in word.
    virtual QString getTypeString() const = 0;
    virtual void setName(const QString &newName);
    /// Takes the value from \a image, whose byte 0 is the element's own address; at least sizeOf() bytes.
    virtual void memSet(unsigned char *image);
    /// Writes into \a mask, of at least sizeOf() bytes, all ones where bytes can be read and zeros where not.
    virtual void getReadMask(unsigned char *mask) const;
    /// Writes the value into \a image, of at least sizeOf() bytes.
    virtual void memGet(unsigned char *image) const;
    /// "0x" and the address in eight upper-case hexadecimal digits.
    virtual QString getAddressString() const;
    /// The name of the element's anchor in the documentation site.
    virtual QString getHrefName() const;
    virtual QString vhdl_serialize(int indent, QStringList &seen) const;
    /// The block of a template in a C header: base addresses, typedef, typed pointers, bitfield macros.
    virtual QString c_content() const;
    /// The C definition of a template.
    virtual QString c_typedefSerialize() const;
    /// The member line or lines at nesting level \a level of a C structure.
    virtual QString c_serialize(int level) const;
    /// The block of a template in an assembly header.
    virtual QString asm_content() const;
    virtual QString vhdl_content() const;
    /// The element's text on a page of the documentation site, \a level steps of 25 pixels from the margin.
    virtual QString html_serialize(int level) const;
    /// The element's comment as a box on such a page.
    virtual QString html_comment_serialize(int level) const;
    /// The nodes of the element and of what it contains in the documentation site's menu, \a level deep (from 1 on),
    /// with links into the file \a page.
    virtual QString treenode_serialize(int level, const QString &page) const;
    /// The address macros of an assembly header: \a prefix is the path so far, \a base the macro added to.
    virtual QString asm_serialize(const QString &prefix, const QString &base) const;
    /// The bitfield macros. A name that stands in \a usedNames is written commented out; new ones are appended.
    virtual QString macro_serialize(const QString &prefix, QStringList &usedNames) const;
    /// What may stand behind this element in a console, by key.
    virtual QMap<QString, CXMLCompletionEntry> getCompletionListFromTokens(const QStringList &tokens);
    /// The element that \a tokens name, of which the first names this one; null when there is none. Following a
    /// pointer may create the element behind it.
    virtual VMXMLElement *getElementFromPathTokens(const QStringList &tokens);
    /// Records whether the last read from the target failed.
    virtual void setReadError(bool failed);
    /// Prints the element and what it holds on the standard output; the memory they take in bytes.
    virtual int dumpInfo(int level) const;

    /// The outermost holder, null for an element without a parent.
    VMXMLElement *getTopParent() const;
    /// The root archive on which the element hangs, or null.
    VMRootArchive *getRootArchive() const;
    /// The nearest archive above the element, or null. An instance hangs on the root archive and has none.
    VMXMLArchive *getTopArchive() const;
    bool isRootElement() const;
    bool isInstance() const;
    /// The distance in bytes from this element to \a other, which is not null.
    unsigned int offsetOf(const VMXMLElement *other) const;
    /// The name in lower camel case, as instance pointers use it.
    QString getCInstanceName() const;
    static void dumpIndent(int level);

    /// A deep copy of \a source, which shares nothing with it. It keeps parent, offset and array number; the caller
    /// places it anew and owns it. Null for what can't be copied: archives. \a source is not null.
    static VMXMLElement *anonymousCopy(const VMXMLElement *source);

    // What is small stands last, here and in the derived classes: theirs goes on in the same word.

    VMXMLElement *parent = nullptr; ///< not owned
    veldmap::SourcePlace source;    ///< the tag that declares it; a copy has that of what it was copied from
    QString category;
    QString name;
    QString comment;
    QString typedefName;           ///< the name as a template, empty on anonymous elements
    QString declaredType;          ///< the type word as the description wrote it
    QStringList cKeywords;         ///< C qualifiers in front of the declaration
    std::uint32_t offset = 0;      ///< bytes from the parent's start; the address of a top-level instance
    std::int32_t arrayNumber = -1; ///< index in the enclosing array, -1 outside; 0 on an array's prototype
    XMLElementType type;
    bool readError = false;

protected:
    /// Copies all fields; a derived class copies what it owns.
    VMXMLElement(const VMXMLElement &) = default;

    /// dumpInfo's line of this element, whose object takes \a objectSize bytes; the size again.
    int dumpLine(int level, std::size_t objectSize) const;
};

/// \a element as a T, null when it is null or of another kind.
template <typename T>
T *elementCast(VMXMLElement *element)
{
    return element && T::matches(*element) ? static_cast<T *>(element) : nullptr;
}
template <typename T>
const T *elementCast(const VMXMLElement *element)
{
    return element && T::matches(*element) ? static_cast<const T *>(element) : nullptr;
}
