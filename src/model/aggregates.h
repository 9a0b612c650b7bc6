#pragma once

#include <veldmap/model/element.h>

#include <memory>
#include <vector>

/// Places members one behind the other under a C-like alignment rule.
///
/// Owns its members. Sizes and offsets are bytes and wrap as 32-bit numbers. Text: headers/c_types.cpp,
/// docsite/pages.cpp, docsite/menu.cpp.
class VELDMAP_EXPORT VMStruct : public VMXMLElement {
public:
    /// The element's name is \a name; \a typeName plays no part until a holder sets `typedefName`.
    VMStruct(const QString &typeName, const QString &name);
    /// Copies the members with their offsets; the layout is not computed again.
    VMStruct(const VMStruct &source);
    ~VMStruct() override;

    /// A copy of \a source for who only asks where it lies: all but the members, of which the first and the last that
    /// are no gaps are there as memories without names.
    static std::unique_ptr<VMStruct> outlineOf(const VMStruct &source);

    static bool matches(const VMXMLElement &element) { return element.isStruct(); }

    /// The size with the end padding that keeps an array of the struct aligned.
    int sizeOf() const override;
    int getAlignConstraint() const override;
    bool isStruct() const override;
    /// The typedef's name, empty for an inner struct.
    QString getTypeString() const override;
    void setReadError(bool failed) override;
    int dumpInfo(int level) const override;

    /// Places \a element, which is not null, at the end and takes ownership of it. An alignment above 4 is not
    /// honoured, one of 0 places the element without padding.
    void addElement(VMXMLElement *element);
    /// The members' names, in order.
    QStringList getMemberList() const;
    bool isRootStruct() const;
    /// Whether the first member is an internal register.
    bool hasInternalRegisters() const;

    bool rubyConstants = false;
    int isTypedef = 0; ///< 1 for a typedef, 0 for a module or an inner struct
    std::vector<std::unique_ptr<VMXMLElement>> memberList;
    int structSize = 0;  ///< offset behind the last member, without end padding
    int structAlign = 0; ///< the largest alignment among the members

private:
    struct Outline {};
    VMStruct(const VMStruct &source, Outline);
};

/// Repeats copies of one element at a fixed stride, the element's own size.
///
/// Owns its members and the prototype, which is no member: it is what one member looks like, and what generators print.
/// Text: headers/c_types.cpp, docsite/pages.cpp, docsite/menu.cpp.
class VELDMAP_EXPORT VMArray : public VMXMLElement {
public:
    /// Copies \a element, which stays with the caller. \a countExpression is the count as written in the description;
    /// empty means the decimal \a count. A \a count below 1 makes an array without members.
    VMArray(const QString &name, VMXMLElement *element, int count, const QString &countExpression);
    /// Copies the members themselves, so that values and pointers survive.
    VMArray(const VMArray &source);
    ~VMArray() override;

    static bool matches(const VMXMLElement &element) { return element.isArray(); }

    int sizeOf() const override;
    int getAlignConstraint() const override;
    bool isArray() const override;
    /// The type of an element followed by "[]"; "Array" without members.
    QString getTypeString() const override;
    /// Renames the array, and its members to name[0], name[1], ...
    void setName(const QString &newName) override;
    void setReadError(bool failed) override;
    int dumpInfo(int level) const override;

    /// The number of members.
    int count() const;
    /// The members' names, in index order.
    QStringList getMemberList() const;

    int declaredCount;
    std::unique_ptr<VMXMLElement> prototype;
    std::vector<std::unique_ptr<VMXMLElement>> memberList;
    QString countExpression;

private:
    void takePrototype(VMXMLElement *copy);
    void appendMember(VMXMLElement *copy);
};

/// A reserved gap. It names itself from its place and size, and never causes padding.
///
/// The name is "Reserved_", the offset in eight hexadecimal digits, "_", the size in bits. It is made when the gap is
/// made and whenever it is placed with remap(); who writes `offset` or `holeBits` places it again.
class VELDMAP_EXPORT VMHole : public VMXMLElement {
public:
    explicit VMHole(int bits);

    static bool matches(const VMXMLElement &element) { return element.getType() == XML_HOLE; }

    /// The whole bytes of the gap, cut toward zero.
    int sizeOf() const override;
    int getAlignConstraint() const override;
    void remap(unsigned int newOffset) override;
    /// Does nothing: the name tells the place.
    void setName(const QString &newName) override;
    QString getPath() const override;
    QString getTypeString() const override;

    int holeBits;
};

/// A block of memory of \a size bytes without inner structure.
class VELDMAP_EXPORT VMMemory : public VMXMLElement {
public:
    VMMemory(const QString &name, int size);

    static bool matches(const VMXMLElement &element) { return element.getType() == XML_MEMORY; }

    int sizeOf() const override;
    int getAlignConstraint() const override;
    QString getTypeString() const override;

    int memorySize;
};
