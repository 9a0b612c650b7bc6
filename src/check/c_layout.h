#pragma once

#include "check/type_names.h"

#include <functional>

class VMStruct;

namespace veldmap {

/// How a C compiler lays out what the headers declare: each member aligned to its own size, for 4-byte pointers and
/// enums. The tree goes its own ways in places: a memory is aligned to 4 there, and bytes in C; a gap aligns nothing
/// there, while the header fills it with registers.
class CLayout {
public:
    struct Size {
        qint64 bytes = 0;
        qint64 align = 1;
    };

    /// \a types must outlive it.
    explicit CLayout(const TypeNames &types) : m_types(types) {}

    Size sizeOf(const VMXMLElement &element);
    /// The same for \a structure, member by member: \a onMember hears each that the header prints, with its offset.
    Size walk(const VMStruct &structure, const std::function<void(const VMXMLElement &, qint64 offset)> &onMember);

private:
    Size sizeOfTemplate(const VMXMLElement &element);

    const TypeNames &m_types;
    QHash<const VMXMLElement *, Size> m_templates;
};

} // namespace veldmap
