#pragma once

#include "findings/callbacks.h"
#include "findings/finding.h"

namespace veldmap {

/// Calls \a callback with \a text; a null one drops it.
inline void sendText(VMMessageCallback callback, const QString &text)
{
    if (callback)
        callback(text.toUtf8().constData());
}

/// Tells a host's callbacks what is found, each at its level, as "FILE:LINE:COLUMN:TEXT".
class CallbackSink final : public Sink {
public:
    explicit CallbackSink(const Callbacks &callbacks) : m_callbacks(callbacks) {}

    void take(const Finding &finding) override
    {
        const VMMessageCallback callback = finding.severity == Severity::Error     ? m_callbacks.error
                                           : finding.severity == Severity::Warning ? m_callbacks.warning
                                                                                   : m_callbacks.log;
        if (callback) // else the text is not made
            sendText(callback, placedText(finding));
    }

private:
    Callbacks m_callbacks;
};

} // namespace veldmap
