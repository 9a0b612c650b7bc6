#include "loading/archive_loader.h"

#include "loading/load_budget.h"
#include "xml/tag_attributes.h"
#include "model/aggregates.h"
#include "model/tree_size.h"

// Arrays, instances and cut fields make much out of little: what they would hold is counted before it is made.

using namespace Qt::StringLiterals;
using veldmap::Tag;
namespace limits = veldmap::limits;

VMXMLElement *VMArchiveLoader::arrayOf(std::unique_ptr<VMXMLElement> element, const veldmap::Count &count,
                                       const QString &name, const Tag &tag, const VMXMLArchive &archive)
{
    if (!count.isArray)
        return element.release();
    const qint64 elements = veldmap::treeSizeOf(*element).elements * qMax(count.value, 0);
    if (elements > limits::kArrayElements) {
        fail(tag, archive,
             u"Array '%1' is too large: it would hold %2 elements, and %3 is the limit."_s.arg(
                 name, QString::number(elements), QString::number(limits::kArrayElements)));
        return nullptr;
    }
    if (!mayCopy(elements, tag, archive))
        return nullptr;
    return std::make_unique<VMArray>(name, element.get(), count.value, count.expression).release();
}

bool VMArchiveLoader::mayCopy(qint64 elements, const Tag &tag, const VMXMLArchive &archive)
{
    m_budget->copiedElements += elements;
    if (m_budget->copiedElements <= m_budget->copiesAllowed())
        return true;
    return fail(tag, archive,
                u"The instances, arrays and cut bitfields of the description hold more than %1 elements."_s.arg(
                    m_budget->copiesAllowed()));
}

bool VMArchiveLoader::mayCopyType(const VMXMLElement &element, const Tag &tag, const VMXMLArchive &archive)
{
    const veldmap::TreeSize size = veldmap::treeSizeOf(element);
    if (size.depth > limits::kTypeDepth)
        return fail(tag, archive, u"Types are nested more than %1 deep."_s.arg(limits::kTypeDepth));
    return mayCopy(size.elements, tag, archive);
}

bool VMArchiveLoader::mayKeepText(qint64 characters, const Tag &tag, const VMXMLArchive &archive)
{
    constexpr qint64 kCharactersPerElement = 200; // of the same size in memory
    return mayCopy(characters / kCharactersPerElement, tag, archive);
}
