#pragma once

#include "findings/finding.h"
#include "import/device.h"

namespace veldmap {

/// Tells what an import has to say of elements of one source file.
class Told {
public:
    Told(const QString &file, Sink &sink) : m_file(file), m_sink(sink) {}

    void operator()(const Rule &rule, const chip::At &at, const QStringList &arguments)
    {
        m_sink.take(Finding(rule, {m_file, at.line, at.column}, arguments));
    }

private:
    QString m_file;
    Sink &m_sink;
};

} // namespace veldmap
