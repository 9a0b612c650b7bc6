#pragma once

#include <veldmap/model/valuable.h>

/// A valuable whose value is an address. The element behind it is made when a host first looks there.
///
/// Owns the pointed element, whose address is the pointer's value: it moves when the value changes.
class VELDMAP_EXPORT VMPointer : public VMValuable {
public:
    VMPointer(const QString &name, const QString &pointedType);
    /// Copies the pointed element too; `innerData` stays empty.
    VMPointer(const VMPointer &source);
    ~VMPointer() override;

    static bool matches(const VMXMLElement &element) { return element.isPointer(); }

    int sizeOf() const override;
    int getAlignConstraint() const override;
    bool isPointer() const override;
    QString getCTypeString() const override;
    QString getTypeString() const override;
    void setReadError(bool failed) override;
    int dumpInfo(int level) const override;
    unsigned int getValue() const override;
    void setValue(unsigned int value) override;

    /// Makes the pointed element from the type word that `pointedType` holds now. Nothing happens when there is an
    /// element already, whatever its type, when there is no such type, or when the pointer hangs on no root archive.
    ///
    /// Nothing happens either at the end of too long a chain, since types that point to themselves could be followed
    /// without end. The elements behind pointers, one behind the other, have at most 4096 levels: in a list whose nodes
    /// are structures the 2049th step is refused, as a node and its pointer are two levels. And no step is made where
    /// the elements behind the pointers in front of it are 262,144 or more together; the last one may be of any size.
    void allocatePointedElement();
    /// Deletes the pointed element; the value stays.
    void deletePointedElement();
    /// Points to \a element, at its address, and takes ownership of it. Null clears element and value.
    void pointTo(VMXMLElement *element);
    /// Keeps the \a length bytes at \a data up to the first zero byte as text, with "..." behind it if there is none.
    void setInnerData(const unsigned char *data, int length);
    /// The console class of an anonymous pointed element. Text: access/console_classes.cpp.
    QString getRubyBasicType() const;

    std::unique_ptr<VMXMLElement> pointedElement;
    std::uint32_t pointerValue = 0;
    QString pointedType; ///< type word of the pointed element
    QString innerData;   ///< preview of the memory behind the pointer, for a host

private:
    bool hasRoomBehindFor(qint64 levels) const;

    // Of what allocatePointedElement made.
    qint64 m_pointedElements = 0;
    int m_pointedLevels = 0;
};
