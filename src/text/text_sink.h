#pragma once

#include <QByteArrayView>

#include <functional>

namespace veldmap {

/// Takes a text in pieces while it is made, so that a large one needs no memory.
class TextSink {
public:
    virtual ~TextSink() = default;
    /// Takes the next \a piece, in UTF-8; false when no more is wanted.
    virtual bool take(QByteArrayView piece) = 0;
};

/// Gives a text to a sink, the same each time; false when the sink has not taken all of it.
using TextSource = std::function<bool(TextSink &sink)>;

} // namespace veldmap
