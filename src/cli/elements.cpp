#include "cli/elements.h"

#include "access/path_hint.h"
#include "access/search.h"
#include "cli/options.h"
#include "cli/program_rules.h"
#include "cli/session.h"

namespace veldmap::cli {

QList<VMXMLElement *> elementsOf(Session &session, const QString &word)
{
    if (const std::optional<quint32> address = addressOf(word)) {
        const QList<VMXMLElement *> elements = elementsAt(session.map, *address);
        if (elements.isEmpty())
            session.messages.tell(rules::kNothingAt, {word});
        return elements;
    }
    VMXMLElement *element = findElement(session.map, word, session.messages);
    return element ? QList{element} : QList<VMXMLElement *>();
}

} // namespace veldmap::cli
