#include "access/image_writer.h"

#include "access/access_rules.h"
#include "access/path_hint.h"
#include "findings/finding.h"
#include "model/valuable.h"

namespace veldmap {

ImageWriter::ImageWriter(const VMMemoryMap &map, TargetImage image, Sink &sink)
    : m_map(map), m_image(std::move(image)), m_sink(sink)
{
}

bool ImageWriter::assign(const Assignment &assignment)
{
    VMXMLElement *element = findElement(m_map, assignment.path, m_sink);
    if (!element)
        return false;
    const auto *field = elementCast<VMBitField>(element);
    auto *valuable = elementCast<VMValuable>(field ? field->parent : element);
    if (!valuable) {
        m_sink.take(Finding(access_rules::kNoValue, {}, {assignment.path}));
        return false;
    }
    if (!m_image.followPointersTo(*valuable) || !m_image.read(*valuable)) {
        m_sink.take(Finding(access_rules::kNotInImage, {}, {assignment.path, m_image.description()}));
        return false;
    }
    const std::optional<quint32> value = field ? valueToWrite(*field, *valuable, baseOf(*valuable), assignment, m_sink)
                                               : valueToWrite(*valuable, assignment, m_sink);
    if (!value)
        return false;
    valuable->setValue(*value);
    m_image.write(*valuable);
    m_written.insert(valuable->getBaseAddress());
    return true;
}

/// The value of a register, which has been read, for changing a field in it: without the actions that reading back and
/// writing would repeat. Assignments of one command to one register are one write, so its own actions stay.
quint32 ImageWriter::baseOf(const VMValuable &valuable) const
{
    return m_written.contains(valuable.getBaseAddress()) ? valuable.getValue() : valuable.getValueForWritingBitfield();
}

} // namespace veldmap
