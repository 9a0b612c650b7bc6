#pragma once

#include "import/names.h"
#include "import/plan.h"
#include "import/told.h"

namespace veldmap {

/// An enum that fields share instead of having options of their own.
struct SharedEnum {
    QString name;
    std::vector<plan::Option> entries; ///< with the names that they have in the enum
    chip::At at;
};

/// The enums of a description.
struct SharedEnums {
    std::vector<SharedEnum> common;              ///< of several types
    std::vector<std::vector<SharedEnum>> ofType; ///< of one type, for each
};

/// Finds lists of options that stand in several fields of \a types and makes enums of them: of those lists the fields
/// keep nothing but the name. \a told hears where comments are lost.
SharedEnums shareEnums(std::vector<plan::Type> &types, Told &told);

} // namespace veldmap
