#include "access/completion.h"
#include "model/element.h"

// What an element answers that has nothing of its own to offer: bitfields, holes and memories are found by their own
// name alone, and nothing stands behind them.

QMap<QString, CXMLCompletionEntry> VMXMLElement::getCompletionListFromTokens(const QStringList &)
{
    return {};
}

VMXMLElement *VMXMLElement::getElementFromPathTokens(const QStringList &tokens)
{
    return tokens.size() == 1 && getName() == tokens.first() ? this : nullptr;
}
