#include "import/kept_additions.h"

namespace veldmap {

void keepAdditions(const QString & /*directory*/, Import & /*import*/, Sink & /*sink*/) {}

} // namespace veldmap
