#include "cli/library_messages.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

constexpr Rule kLog = {"library-note"_L1, Severity::Note, u"%1"};
constexpr Rule kError = {"library-error"_L1, Severity::Error, u"%1"};
constexpr Rule kWarning = {"library-warning"_L1, Severity::Warning, u"%1"};

Messages *receiver = nullptr;

void pass(const Rule &rule, const char *bytes)
{
    // soc.xml:3:17:Unvalid tag : 'reg' has a place, "Unable to open file soc.xml" has none.
    static const QRegularExpression placed(u"^(.+?):(\\d+):(\\d+):(.*)$"_s,
                                           QRegularExpression::DotMatchesEverythingOption);
    const QString text = QString::fromUtf8(bytes);
    const QRegularExpressionMatch match = placed.match(text);
    if (match.hasMatch())
        receiver->take(Finding(rule,
                               {match.captured(1), match.captured(2).toLongLong(), match.captured(3).toLongLong()},
                               {match.captured(4)}));
    else
        receiver->take(Finding(rule, {}, {text}));
}

} // namespace

LibraryMessages::LibraryMessages(Messages &messages)
{
    receiver = &messages;
}

LibraryMessages::~LibraryMessages()
{
    receiver = nullptr;
}

void LibraryMessages::onLog(const char *text)
{
    pass(kLog, text);
}

void LibraryMessages::onError(const char *text)
{
    pass(kError, text);
}

void LibraryMessages::onWarning(const char *text)
{
    pass(kWarning, text);
}

} // namespace veldmap::cli
