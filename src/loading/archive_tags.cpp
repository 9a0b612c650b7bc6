#include "loading/archive_reader.h"

#include "findings/limits.h"
#include "loading/rules.h"
#include "model/root_archive.h"

#include <QDir>
#include <QScopedValueRollback>

#include <algorithm>
#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The name of the description \a relativeFile below \a basePath, as messages have it.
SourceFile sourceFileOf(const QString &basePath, const QString &relativeFile)
{
    return SourceFile(QDir::cleanPath(basePath + u'/' + relativeFile));
}

} // namespace

/// \a finding, which says that a file can't be opened, with the tag that includes it.
Finding ArchiveReader::notIncluded(Finding finding) const
{
    finding.hint = u"a file is named relative to the one that includes it; optional=\"yes\" allows it to be missing"_s;
    return finding.withPlace(m_include.place(), u"included here"_s);
}

VMXMLArchive *ArchiveReader::readFile(const FileName &name, bool isMandatory, XMDOpenError &status)
{
    status = XMDOpenSuccess;
    if (VMXMLArchive *known = m_builder.findArchive(name.basePath, name.relativeFile)) {
        status = XMDOpenAlreadyLoaded;
        return known;
    }
    // A file that has faults has told them.
    if (const auto read = m_goesOn ? m_readFiles.constFind(name.path) : m_readFiles.cend();
        read != m_readFiles.cend()) {
        status = *read ? XMDOpenSuccess : XMDOpenInvalid;
        return *read;
    }
    const std::unique_ptr<DescriptionFile> file = m_files.read(name);
    status = file->status;
    for (const Finding &finding : std::as_const(file->told.findings)) {
        if (!isMandatory && finding.rule == &rules::fileNotOpened)
            continue;
        m_sink.take(finding.rule == &rules::fileNotOpened && m_include.line > 0 ? notIncluded(finding) : finding);
        m_hasToldError = m_hasToldError || finding.severity == Severity::Error;
    }
    m_hasFailed = m_hasFailed || status == XMDOpenInvalid;
    m_lacksFile = m_lacksFile || status == XMDOpenInvalid || (status == XMDOpenUnreadable && isMandatory);
    VMXMLArchive *archive = status == XMDOpenSuccess ? readDocument(*file, name, status) : nullptr;
    m_lacksFile = m_lacksFile || status == XMDOpenInvalid;
    if (m_goesOn && status != XMDOpenUnreadable)
        m_readFiles.insert(name.path, archive);
    return archive;
}

VMXMLArchive *ArchiveReader::readDocument(const DescriptionFile &file, const FileName &name, XMDOpenError &status)
{
    status = XMDOpenInvalid;
    const QScopedValueRollback shown(m_shownAs, file.shownAs);
    if (const Refusal refused = countFile(file, name)) {
        tell(*refused.rule, {name.path}, refused.arguments);
        m_goesOn = false;
        m_hasFailed = true;
        return nullptr;
    }
    if (m_listener)
        m_listener->onDocument(file.document, fileOf(name.basePath, name.relativeFile).name(), file.study.get());
    const Tag tag = file.document.root();
    if (tag.name() == "bigarchive"_L1)
        return readBigArchive(tag, name, status);
    if (tag.name() == "archive"_L1) {
        VMXMLArchive *archive = readArchive(tag, name.relativeFile, name.basePath);
        status = archive ? XMDOpenSuccess : XMDOpenInvalid;
        return archive;
    }
    // The old formats go by the name as written.
    if (tag.nameAsWritten() == "module"_L1)
        return readBareModule(tag, name, status);
    const bool isVeryOld = tag.nameAsWritten() == "chip"_L1 || tag.nameAsWritten() == "soft"_L1;
    tell(isVeryOld ? rules::veryOldFormat : rules::noArchive, {name.path});
    return nullptr;
}

Refusal ArchiveReader::countFile(const DescriptionFile &file, const FileName &name)
{
    const qsizetype before = m_readPaths.size();
    m_readPaths.insert(name.path);
    if (m_readPaths.size() == before)
        return m_builder.countFileReadAgain(file.bytes);
    m_builder.countFile(file.bytes);
    return {};
}

VMXMLArchive *ArchiveReader::readBigArchive(const Tag &tag, const FileName &name, XMDOpenError &status)
{
    VMXMLArchive *last = nullptr;
    for (const Tag &child : ChildTags(tag)) {
        if (child.name() != "archive"_L1) {
            tell(rules::foreignTagAmongArchives, {name.path, child.lineNumber(), child.columnNumber()},
                 {child.name().toString()});
            if (!m_goesOn)
                return nullptr;
            m_hasFailed = true;
            continue;
        }
        last = readArchive(child, name.relativeFile, name.basePath);
        if (!last && !m_goesOn)
            return nullptr;
    }
    status = XMDOpenSuccess;
    return last;
}

VMXMLArchive *ArchiveReader::readBareModule(const Tag &tag, const FileName &name, XMDOpenError &status)
{
    tell(rules::oldFormat, {name.path});
    const QScopedValueRollback file(m_file, fileOf(name.basePath, name.relativeFile));
    VMXMLArchive &archive = m_builder.addArchive(name.relativeFile, name.basePath);
    archive.source = sourceOf(tag);
    if (!readType(tag, archive)) {
        m_builder.discardArchive(archive);
        return nullptr;
    }
    status = XMDOpenSuccess;
    m_builder.closeArchive(archive);
    return &archive;
}

VMXMLArchive *ArchiveReader::readArchive(const Tag &tag, const QString &relativeFile, const QString &basePath)
{
    const QScopedValueRollback file(m_file, fileOf(basePath, relativeFile));
    const QString relative = readText(tag, u"relative");
    VMXMLArchive &archive = m_builder.addArchive(relative.isEmpty() ? relativeFile : relative, basePath);
    archive.source = sourceOf(tag);
    archive.generateAsm = readFlag(tag, u"asm", true);
    archive.vhdlPackage = readText(tag, u"vhdlpkg");

    const bool isOneTooMany = archive.getRootArchive()->xmlArchives.size() > limits::kArchives;
    bool isComplete =
        !isOneTooMany || fail(tag, archive, Refusal{&rules::tooManyArchives, {QString::number(limits::kArchives)}});
    for (const Tag &child : ChildTags(tag)) {
        if (!isComplete)
            break;
        const bool isRead = readArchiveChild(child, archive);
        m_hasFailed = m_hasFailed || !isRead;
        isComplete = isRead || m_goesOn;
    }
    if (!isComplete) {
        m_builder.discardArchive(archive);
        return nullptr;
    }
    m_builder.closeArchive(archive);
    return &archive;
}

bool ArchiveReader::readArchiveChild(const Tag &child, VMXMLArchive &archive)
{
    using Reader = ArchiveReader;
    /// A tag that may stand in an archive; true when the load may go on behind it.
    struct ArchiveTag {
        QLatin1StringView tag;
        bool (*read)(Reader &reader, const Tag &tag, VMXMLArchive &archive);
    };
    constexpr auto readType = [](Reader &reader, const Tag &tag, VMXMLArchive &to) {
        return reader.readType(tag, to) != nullptr;
    };
    constexpr auto readInclude = [](Reader &reader, const Tag &tag, VMXMLArchive &to) {
        const XMDOpenError result = reader.readInclude(tag, to);
        if (result == XMDOpenUnreadable)
            reader.tell(rules::includeSkipped, {to.getTotalPath()});
        return result != XMDOpenInvalid;
    };
    constexpr auto readComment = [](Reader &reader, const Tag &tag, VMXMLArchive &to) {
        to.archiveComment = reader.m_builder.texts().of(veldmap::readComment(tag));
        return true;
    };
    constexpr auto readCJoker = [](Reader &reader, const Tag &tag, VMXMLArchive &to) {
        to.cJoker = reader.m_builder.texts().of(veldmap::readCJoker(tag));
        return true;
    };
    static constexpr ArchiveTag kArchiveTags[] = {
        {"module"_L1, readType},
        {"typedef"_L1, readType},
        {"include"_L1, readInclude},
        {"spacer"_L1, [](Reader &reader, const Tag &tag, VMXMLArchive &to) { return reader.readSpacer(tag, to); }},
        {"var"_L1, [](Reader &reader, const Tag &tag, VMXMLArchive &to) { return reader.readVariable(tag, to); }},
        {"range"_L1, [](Reader &reader, const Tag &tag, VMXMLArchive &to) { return reader.readRange(tag, to); }},
        {"enum"_L1, [](Reader &reader, const Tag &tag, VMXMLArchive &to) { return reader.readEnum(tag, to); }},
        {"instance"_L1,
         [](Reader &reader, const Tag &tag, VMXMLArchive &to) { return reader.readInstance(tag, to) != nullptr; }},
        {"comment"_L1, readComment},
        {"cjoker"_L1, readCJoker},
        {"alias"_L1, [](Reader &reader, const Tag &tag, VMXMLArchive &to) { return reader.readAlias(tag, to); }},
    };
    const QStringView tagName = child.name();
    const auto row = std::ranges::find_if(kArchiveTags, [&](const ArchiveTag &r) { return r.tag == tagName; });
    if (row == std::end(kArchiveTags))
        return fail(child, archive, rules::foreignTagInArchive, {tagName.toString()});
    if (!checkName(child, archive) || !row->read(*this, child, archive))
        return false;
    const Refusal refused = m_builder.checkTexts();
    return !refused || fail(child, archive, refused);
}

bool ArchiveReader::checkName(const Tag &tag, const VMXMLArchive &archive)
{
    if (tag.attribute(u"name").size() <= limits::kNameCharacters)
        return true;
    return fail(tag, archive, Refusal{&rules::nameTooLong, {QString::number(limits::kNameCharacters)}});
}

bool ArchiveReader::fail(const Tag &tag, const VMXMLArchive &archive, const Rule &rule, const QStringList &arguments)
{
    m_hasFailed = true;
    tell(rule, placeOf(tag, archive), arguments);
    return false;
}

bool ArchiveReader::fail(const Tag &tag, const VMXMLArchive &archive, const Refusal &refused)
{
    m_goesOn = false; // what stands behind it would be refused for the same limit
    return fail(tag, archive, *refused.rule, refused.arguments);
}

bool ArchiveReader::failEvaluation(const Tag &tag, const VMXMLArchive &archive, const Rule &rule,
                                   const QStringList &arguments, const Evaluated &result)
{
    if (!result.wrong.unknownName.isEmpty() && follows(result.wrong.unknownName))
        return false;
    m_hasFailed = true;
    Finding finding(rule, placeOf(tag, archive), arguments);
    finding.note = result.reason;
    finding.expression = result.wrong;
    tell(finding);
    return false;
}

bool ArchiveReader::failUnknown(const QString &name, const Tag &tag, const VMXMLArchive &archive, const Rule &rule,
                                const QStringList &arguments)
{
    return follows(name) ? false : fail(tag, archive, rule, arguments);
}

/// That \a name is not known follows from an earlier fault, or may follow from a missing file; but the first fault is
/// always told.
bool ArchiveReader::follows(const QString &name) const
{
    return m_goesOn && m_hasToldError && (m_lacksFile || m_lostNames.contains(name));
}

bool ArchiveReader::loseField(const QString &name)
{
    if (m_goesOn)
        m_lostFields.insert(name);
    return false;
}

bool ArchiveReader::lose(const QString &name)
{
    if (m_goesOn)
        m_lostNames.insert(name);
    return false;
}

void ArchiveReader::tell(const Rule &rule, const Place &place, const QStringList &arguments)
{
    tell(Finding(rule, place, arguments));
}

void ArchiveReader::tell(const Finding &finding)
{
    m_hasToldError = m_hasToldError || finding.severity == Severity::Error;
    m_sink.take(finding);
}

Evaluated ArchiveReader::evaluate(const QString &expression, const VMXMLArchive &archive)
{
    return m_builder.evaluate(expression, *archive.variables);
}

bool ArchiveReader::evaluateSize(const QString &expression, int &value, const Tag &tag, const VMXMLArchive &archive,
                                 const Rule &rule, const QStringList &arguments)
{
    const Evaluated result = evaluate(expression, archive);
    value = result.value;
    return !result.failed || failEvaluation(tag, archive, rule, arguments, result);
}

bool ArchiveReader::evaluateArrayCount(Count &count, const Tag &tag, const VMXMLArchive &archive,
                                       const QString &parentName, const QString &type, const QString &name)
{
    if (!count.isArray)
        return true;
    if (!evaluateSize(count.expression, count.value, tag, archive, rules::arrayCount, {parentName, type, name}))
        return false;
    return count.value >= 0 || fail(tag, archive, rules::negativeCount, {QString::number(count.value), type, name});
}

ArchiveReader::Element ArchiveReader::arrayOf(Element element, const Count &count, const QString &name, const Tag &tag,
                                              const VMXMLArchive &archive)
{
    if (!count.isArray)
        return element;
    if (const Refusal refused = m_builder.makeArray(element, name, count.value, count.expression)) {
        fail(tag, archive, refused);
        return nullptr;
    }
    return element;
}

bool ArchiveReader::takeSharedComment(const Tag &child, QString &comment)
{
    if (!takeComment(child, comment))
        return false;
    comment = m_builder.texts().of(std::move(comment));
    return true;
}

SourceFile ArchiveReader::fileOf(const QString &basePath, const QString &relativeFile) const
{
    return m_shownAs.isEmpty() ? sourceFileOf(basePath, relativeFile) : SourceFile(m_shownAs);
}

Place ArchiveReader::placeOf(const Tag &tag, const VMXMLArchive &archive) const
{
    return {m_shownAs.isEmpty() ? archive.getTotalPath() : m_shownAs, tag.lineNumber(), tag.columnNumber()};
}

SourcePlace ArchiveReader::sourceOf(const Tag &tag) const
{
    return {m_file, static_cast<quint32>(qMax(tag.lineNumber(), 0)), static_cast<quint32>(qMax(tag.columnNumber(), 0))};
}

} // namespace veldmap
