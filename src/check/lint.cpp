#include "check/lint.h"

#include "check/document_checks.h"
#include "check/document_rules.h"
#include "check/tree_checks.h"
#include "check/tree_rules.h"

#include <algorithm>
#include <tuple>
#include <vector>

using namespace Qt::StringLiterals;

namespace veldmap {

std::span<const LintRule *const> lintRules()
{
    static constexpr const LintRule *kRules[] = {
        // trees
        &lint::fieldOverlap,
        &lint::fieldNameTwice,
        &lint::fieldBeyondRegister,
        &lint::fieldWidth,
        &lint::fieldNoAccess,
        &lint::registerNoAccess,
        &lint::optionBeyondField,
        &lint::optionValueTwice,
        &lint::optionNameTwice,
        &lint::groupOverlap,
        &lint::groupGap,
        &lint::instanceOverlap,
        &lint::instanceView,
        &lint::instanceUnaligned,
        &lint::instanceBeyondMemory,
        &lint::instanceNameTwice,
        &lint::memberNameTwice,
        &lint::negativeSize,
        &lint::holeBits,
        &lint::layoutDiffers,
        &lint::sizeDiffers,
        &lint::moduleTypeName,
        &lint::pointerTypeUnknown,
        &lint::unusedType,
        &lint::unusedVariable,
        &lint::unusedEnum,
        &lint::unusedFile,
        &lint::macroNameTwice,
        &lint::macroOfTwoTypes,
        &lint::variableNameTwice,
        &lint::variableLikeMacro,
        &lint::memberLikeMacro,
        &lint::typeNameTwice,
        &lint::typeSuffixTwice,
        &lint::guardTwice,
        &lint::assemblyMissing,
        &lint::registerNamedBase,
        &lint::fileTwice,
        &lint::conditionNever,
        // words
        &rules::unknownAttribute,
        &rules::unusedAttribute,
        &rules::unusedTag,
        &rules::unknownValue,
        &rules::repeatedText,
        &rules::resetCut,
        // names
        &rules::unusableName,
        &rules::changedName,
        &rules::illegalName,
        &rules::reservedWord,
        &rules::nameless,
        // numbers
        &rules::numberTooLarge,
        &rules::resultTooLarge,
        &rules::hexadecimalAddress,
        &rules::valueInC,
        // texts
        &rules::trailingBackslash,
        &rules::commentEnd,
        &rules::unprintableText,
        &rules::commentMarkup,
        &rules::commentScript,
        &rules::openCondition,
        // notes
        &rules::unknownWaiver,
    };
    return kRules;
}

Lint::Lint(const std::function<bool(const LintRule &)> &isOn)
    : m_looksForUnused(isOn(lint::unusedVariable) || isOn(lint::unusedEnum) || isOn(lint::unusedFile))
{
}

namespace {

/// What one document showed, whose places have no file.
struct DocumentFindings final : DocumentStudy {
    ReadableFindings found;
    DocumentNames names;
};

} // namespace

std::unique_ptr<DocumentStudy> Lint::study(const TagDocument &document) const
{
    auto findings = std::make_unique<DocumentFindings>();
    checkDocument(document, findings->found);
    if (m_looksForUnused)
        findings->names = namesIn(document);
    return findings;
}

void Lint::onDocument(const TagDocument &document, const QString &file, const DocumentStudy *study)
{
    // Chip and software may include the same. Several documents that were made of one file begin at different places.
    const Tag root = document.root();
    const std::pair<int, int> begin = {root.lineNumber(), root.columnNumber()};
    if (m_documents.contains({file, begin}))
        return;
    m_documents.insert({file, begin});
    if (!m_files.contains(file))
        m_files.insert(file, m_files.size());
    const std::unique_ptr<DocumentStudy> own = study ? nullptr : this->study(document);
    const auto &findings = *static_cast<const DocumentFindings *>(study ? study : own.get());
    for (Finding finding : findings.found.findings) {
        finding.place.file = file;
        for (RelatedPlace &other : finding.related)
            other.place.file = file;
        m_ofDocuments.findings.append(std::move(finding));
    }
    if (m_looksForUnused)
        m_unused.add(findings.names, file);
    m_allowances.read(document, file, lintRules(), m_ofDocuments);
}

void Lint::onInclude(const Place &include, const QString &file)
{
    if (m_looksForUnused)
        m_unused.readInclude(include, file);
}

void Lint::report(const VMMemoryMap &map, Sink &sink, int threads) const
{
    ReadableFindings found = m_ofDocuments;
    checkTree(map, found, threads);
    m_unused.report(found);
    using Key = std::tuple<qsizetype, int, int, qsizetype>; // of two at one place the one that was found first
    std::vector<Key> order;
    order.reserve(static_cast<std::size_t>(found.findings.size()));
    for (const Finding &finding : std::as_const(found.findings))
        order.emplace_back(m_files.value(finding.place.file, m_files.size()), finding.place.line, finding.place.column,
                           static_cast<qsizetype>(order.size()));
    std::ranges::sort(order);
    for (const Key &key : order) {
        const Finding &finding = found.findings.at(std::get<3>(key));
        if (!m_allowances.allows(finding))
            sink.take(finding);
    }
}

} // namespace veldmap
