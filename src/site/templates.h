#pragma once

#include <QLatin1StringView>

/// The templates of pages, src/site/templates. The build makes their text a part of the library.
namespace veldmap::templates {

extern const QLatin1StringView kPage;
extern const QLatin1StringView kManual;

} // namespace veldmap::templates
