#pragma once

#include "findings/finding.h"
#include "loading/description_files.h"
#include "loading/document.h"
#include "loading/tree_builder.h"
#include "model/bitfield.h"
#include "xml/document_listener.h"
#include "xml/tag_attributes.h"

#include <QHash>
#include <QSet>

#include <memory>

class VMStruct;
class VMValuable;

namespace veldmap {

/// Reads the tags of a description into the tree. One reader serves a load with all its files.
///
/// Each operation reads one tag with all below it, in the order of the document. False, null or XMDOpenInvalid mean
/// that the tag was refused, which the sink has heard by then; what was made of it is gone. A refused tag is passed up:
/// it fails its archive, and so the load.
class ArchiveReader {
public:
    using Element = std::unique_ptr<VMXMLElement>;

    /// A file to include, as a tag names it.
    struct IncludedFile {
        QString file;
        QString condition; ///< as written, empty where there is none
        bool isOptional = false;
        SourcePlace source = {};
    };

    /// All three must outlive the reader.
    ArchiveReader(TreeBuilder &builder, DescriptionFiles &files, Sink &sink)
        : m_builder(builder), m_files(files), m_sink(sink)
    {
    }
    ArchiveReader(const ArchiveReader &) = delete;
    ArchiveReader &operator=(const ArchiveReader &) = delete;

    /// \a listener, if not null, sees each document before its tags are read.
    void setDocumentListener(DocumentListener *listener) { m_listener = listener; }
    /// From now on instances and arrays are made as LoadOptions::outlines says.
    void makeOutlines()
    {
        m_outlines = true;
        m_builder.outlineArrays();
    }
    /// From now on a refused tag is left out, and what stands behind it is read all the same, so that one run tells of
    /// all faults. What only follows from a fault that was told is not told again. hasFailed() then says whether the
    /// tree is good for anything.
    void goOnAfterErrors() { m_goesOn = true; }
    bool hasFailed() const { return m_hasFailed; }

    // archive_tags.cpp
    /// Reads the file \a name: its archive, or the one of that name that is there already, with status 2.
    VMXMLArchive *readFile(const FileName &name, bool isMandatory, XMDOpenError &status);
    VMXMLArchive *readArchive(const Tag &tag, const QString &relativeFile, const QString &basePath);

    // include_tags.cpp
    XMDOpenError readInclude(const Tag &tag, VMXMLArchive &archive);
    /// Records one alternative in \a include and, with \a load, reads its file.
    XMDOpenError readIncludedFile(VMXMLArchive &archive, VMXMLInclude &include, const IncludedFile &included,
                                  bool load);

    // variable_tags.cpp
    bool readVariable(const Tag &tag, VMXMLArchive &archive);
    bool readRange(const Tag &tag, VMXMLArchive &archive);
    bool readEnum(const Tag &tag, VMXMLArchive &archive);
    bool readEnumEntry(const Tag &tag, VMEnum &owner, VMXMLArchive &archive);
    bool readEnumBound(const Tag &tag, const VMEnum &owner, VMXMLArchive &archive);
    bool readSpacer(const Tag &tag, VMXMLArchive &archive);

    // module_tags.cpp
    /// The template, which the archive owns: the new one, or the one of that name that is there already.
    VMXMLElement *readType(const Tag &tag, VMXMLArchive &archive);
    bool readTypeChildren(const Tag &tag, VMStruct &module, VMXMLArchive &archive);
    Element readStruct(const Tag &tag, VMXMLArchive &archive, const QString &parentName);
    Element readHole(const Tag &tag, VMXMLArchive &archive, const QString &parentName);
    bool readAlias(const Tag &tag, VMXMLArchive &archive);

    // instance_tags.cpp
    /// A top-level instance, which the root archive owns.
    VMXMLElement *readInstance(const Tag &tag, VMXMLArchive &archive);
    Element readInnerInstance(const Tag &tag, VMXMLArchive &archive, const QString &parentName);
    Element readMemory(const Tag &tag, VMXMLArchive &archive, const QString &parentName);
    Element readPointer(const Tag &tag, VMXMLArchive &archive, const QString &parentName);

    // valuable_tags.cpp
    /// \a tagName decides the class.
    Element readValuable(const Tag &tag, VMXMLArchive &archive, const QString &parentName, const QString &tagName);

    // bits_tags.cpp
    bool readBits(const Tag &tag, VMValuable &valuable, VMXMLArchive &archive);

    // field_detail_tags.cpp
    bool readBitgroup(const Tag &tag, VMValuable &valuable, VMXMLArchive &archive);
    bool readBitgroupEntry(const Tag &tag, VMBitGroup &group, VMXMLArchive &archive);
    bool readOptions(const Tag &tag, VMBitField &field, VMXMLArchive &archive);
    bool readOption(const Tag &tag, VMBitFieldOptions &options, VMXMLArchive &archive);

private:
    struct BitsAttributes;
    struct BitPosition;
    struct BitsCut;

    /// A tag that makes a member of a structure, and the places besides a struct where it may stand.
    struct MemberTag {
        using Read = Element (ArchiveReader::*)(const Tag &, VMXMLArchive &, const QString &parentName);
        QLatin1StringView tag;
        Read read; ///< null for a valuable
        bool inModule;
        bool inAlias;
    };
    /// The row of the tags that may stand in a structure, null for any other.
    static const MemberTag *findMemberTag(QStringView tagName);
    Element readMember(const MemberTag &row, const Tag &tag, VMXMLArchive &archive, const QString &parentName);

    VMXMLArchive *readBigArchive(const Tag &tag, const FileName &name, XMDOpenError &status);
    VMXMLArchive *readBareModule(const Tag &tag, const FileName &name, XMDOpenError &status);
    bool readArchiveChild(const Tag &tag, VMXMLArchive &archive);
    IncludedFile includedFileOf(const Tag &tag) const;
    /// As the valuable's getBitGroupByName, without a walk over all its groups for each.
    const VMBitGroup *findGroup(const VMValuable &valuable, const QString &name);
    bool readValuableChild(const Tag &child, VMValuable &valuable, VMXMLArchive &archive, const QString &tagName);

    /// Refuses a name that is too long.
    bool checkName(const Tag &tag, const VMXMLArchive &archive);

    // Tells what is wrong at a tag; always false.
    bool fail(const Tag &tag, const VMXMLArchive &archive, const Rule &rule, const QStringList &arguments = {});
    bool fail(const Tag &tag, const VMXMLArchive &archive, const Refusal &refused);
    /// The same of an expression that has no value, unless that follows from what was told before.
    bool failEvaluation(const Tag &tag, const VMXMLArchive &archive, const Rule &rule, const QStringList &arguments,
                        const Evaluated &result);
    /// The same of something that is not there, named \a name.
    bool failUnknown(const QString &name, const Tag &tag, const VMXMLArchive &archive, const Rule &rule,
                     const QStringList &arguments);
    /// The same of the field or group \a reference of a bitgroup.
    bool failReference(const QString &reference, const Tag &tag, const VMBitGroup &group, const VMXMLArchive &archive);
    Finding notIncluded(Finding finding) const;
    Refusal countFile(const DescriptionFile &file, const FileName &name);
    VMXMLArchive *readDocument(const DescriptionFile &file, const FileName &name, XMDOpenError &status);
    void tell(const Rule &rule, const Place &place, const QStringList &arguments = {});
    void tell(const Finding &finding);
    bool follows(const QString &name) const;
    /// The same of a field or group of the valuable that is being read.
    bool loseField(const QString &name);
    /// Notes that \a name was meant to be declared and is not; always false.
    bool lose(const QString &name);

    Evaluated evaluate(const QString &expression, const VMXMLArchive &archive);

    /// A size or count is evaluated here and nowhere else: \a value is the number of \a expression. What does not
    /// evaluate is told as \a rule with \a arguments.
    bool evaluateSize(const QString &expression, int &value, const Tag &tag, const VMXMLArchive &archive,
                      const Rule &rule, const QStringList &arguments);
    /// The count of an array of registers, integers or pointers, which may not be negative.
    bool evaluateArrayCount(Count &count, const Tag &tag, const VMXMLArchive &archive, const QString &parentName,
                            const QString &type, const QString &name);
    /// \a element, or with a count an array of it under \a name; null when the array is too large.
    Element arrayOf(Element element, const Count &count, const QString &name, const Tag &tag,
                    const VMXMLArchive &archive);

    bool readNamedBits(const BitsAttributes &attributes, const Tag &tag, VMValuable &valuable, VMXMLArchive &archive);
    bool readPosition(const BitsAttributes &attributes, const Tag &tag, const VMValuable &valuable,
                      const VMXMLArchive &archive, BitPosition &position);
    bool evaluatePosition(BitPosition &position, const QString &name, const Tag &tag, const VMValuable &valuable,
                          const VMXMLArchive &archive);
    bool readCut(const BitsAttributes &attributes, const Tag &tag, const VMValuable &valuable,
                 const VMXMLArchive &archive, BitsCut &cut);
    bool readBitsChildren(const Tag &tag, const QString &name, VMBitField &field, VMXMLArchive &archive);
    /// Hands the field to the valuable, followed by the other pieces of a cut one.
    bool addPieces(std::unique_ptr<VMBitField> first, std::unique_ptr<VMBitGroup> group, const BitsCut &cut,
                   const QString &name, const Tag &tag, VMValuable &valuable, const VMXMLArchive &archive);

    // Attributes and comments as texts that the load shares, read as readText, readName and takeComment do.
    QString sharedText(const Tag &tag, QStringView attribute) { return m_builder.texts().of(tag.attribute(attribute)); }
    QString sharedName(const Tag &tag, QStringView attribute)
    {
        return m_builder.texts().ofName(tag.attribute(attribute));
    }
    bool takeSharedComment(const Tag &child, QString &comment);
    QString sharedOnlyComment(const Tag &tag) { return m_builder.texts().of(readOnlyComment(tag)); }

    /// The name of the description \a relativeFile below \a basePath in places.
    SourceFile fileOf(const QString &basePath, const QString &relativeFile) const;
    /// The place of \a tag for what is wrong with it.
    Place placeOf(const Tag &tag, const VMXMLArchive &archive) const;
    /// The place of \a tag for what is made of it.
    SourcePlace sourceOf(const Tag &tag) const;

    TreeBuilder &m_builder;
    DescriptionFiles &m_files;
    Sink &m_sink;
    DocumentListener *m_listener = nullptr;
    SourceFile m_file;     ///< that is being read
    QString m_shownAs;     ///< the file that its places are in, empty for itself
    SourcePlace m_include; ///< the tag by which it is included, null for the root
    int m_includeDepth = 0;
    bool m_outlines = false;

    bool m_goesOn = false;
    bool m_hasFailed = false;
    bool m_hasToldError = false;
    bool m_lacksFile = false;                    ///< any name may have been declared in a file that is not there
    QSet<QString> m_lostNames;                   ///< what would have been declared but for a fault
    QSet<QString> m_lostFields;                  ///< the same of fields and groups of the valuable that is being read
    QHash<QString, const VMBitGroup *> m_groups; ///< the first of each name of the valuable that is being read
    std::size_t m_knownGroups = 0;               ///< how many of its groups that covers
    QSet<QString> m_readPaths;                   ///< of all files that were read
    QHash<QString, VMXMLArchive *> m_readFiles;  ///< by path, what became of them, null for nothing
};

/// "bin", "hex", or anything else for decimal.
inline DisplayType displayOf(QStringView word)
{
    if (word == QLatin1StringView("bin"))
        return DISPLAY_BIN;
    return word == QLatin1StringView("hex") ? DISPLAY_HEX : DISPLAY_DEC;
}

} // namespace veldmap
