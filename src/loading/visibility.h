#pragma once

#include <QtGlobal>

#include <vector>

namespace veldmap {

/// Which archives of a load see which others through their includes.
///
/// Archives go by the numbers of their creation. Nearly all that is included has been read to its end by then, so that
/// what it sees is known; an archive that includes one which is still being read, or one that is not known here, is not
/// known itself.
class Visibility {
public:
    /// Knows the next archive, which is read from now on.
    void add(std::size_t number);
    /// The archive has been read.
    void close(std::size_t number);
    void addInclude(std::size_t archive, std::size_t included);

    bool isKnown(std::size_t archive) const;
    /// Whether \a archive, which is known, includes \a other in whatever way.
    bool sees(std::size_t archive, std::size_t other) const;

private:
    static constexpr std::size_t kBits = 64;
    struct Row {
        std::vector<quint64> seen; // a bit for each archive
        bool isThere = false;
        bool isOpen = true;
        bool isSure = true;
    };
    std::vector<Row> m_rows;
};

} // namespace veldmap
