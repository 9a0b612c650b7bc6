#pragma once

#include <QList>
#include <QString>

class VMXMLElement;

namespace veldmap::cli {

struct Session;

/// What \a word names: one element by its path, or all that lie at an address. An error is told when there is none.
QList<VMXMLElement *> elementsOf(Session &session, const QString &word);

} // namespace veldmap::cli
