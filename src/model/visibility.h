#pragma once

#include <QtGlobal>

#include <vector>

namespace veldmap {

/// Which archives of a root see which others through their includes.
///
/// Archives go by numbers, each once, in the order of a load: an archive is added, then what it includes, and then it
/// is closed. What is included and has been closed is seen with all that it sees. An archive that is still open will
/// see more, so a row names it, and whoever asks looks there too; no more archives are open than include one another.
class Visibility {
public:
    /// Knows the next archive, which is open from now on.
    void add(std::size_t number);
    /// The archive gets no more includes.
    void close(std::size_t number);
    /// \a archive, which is open, includes \a included. If that was never added, nothing is known of any archive.
    void addInclude(std::size_t archive, std::size_t included);

    bool isKnown(std::size_t archive) const;
    /// Whether \a archive, which is known, includes \a other in whatever way.
    bool sees(std::size_t archive, std::size_t other) const;
    /// Whether \a archive, which is known, is in no circle of includes, and all that it sees is known.
    bool isFinal(std::size_t archive) const;

private:
    static constexpr std::size_t kBits = 64;
    struct Row {
        std::vector<quint64> seen;      // a bit for each archive
        std::vector<std::size_t> opens; // which were open when they were seen; what they see is seen too
        bool isThere = false;
        bool isOpen = true;
    };
    static void mark(Row &row, std::size_t number);
    void settle(std::size_t archive);
    template <typename Visit>
    bool visitRows(std::size_t archive, const Visit &visit) const;

    std::vector<Row> m_rows;
    bool m_isSure = true;
};

} // namespace veldmap
