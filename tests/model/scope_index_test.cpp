#include "model/scope_index.h"

#include "model/archive.h"
#include "model/root_archive.h"

#include <gtest/gtest.h>

#include <random>

using namespace Qt::StringLiterals;
using namespace veldmap;

namespace {

/// Loads an arbitrary description: archives with variables and enums of a few names, which include new archives and
/// such as are there already, also those that are being read. Wherever a load might ask for a name, the index and a
/// walk over the tree must agree.
class RandomLoad {
public:
    explicit RandomLoad(unsigned int seed) : m_random(seed), m_names(1 + pick(3)) {}

    void run()
    {
        read(0);
        ASSERT_FALSE(HasFailure());
        const ScopeIndex finished(m_root);
        for (const VMXMLArchive *archive : m_root.xmlArchives)
            compare(finished, *archive);
    }

private:
    int pick(int choices) { return static_cast<int>(m_random() % static_cast<unsigned int>(choices)); }
    static bool HasFailure() { return testing::Test::HasFailure(); }

    VMXMLArchive &read(int depth)
    {
        auto *archive = new VMXMLArchive(&m_root);
        m_root.addXMLArchive(archive);
        m_index.addArchive(*archive);
        for (int step = pick(8); step > 0 && !HasFailure(); --step) {
            const int what = pick(8);
            if (what == 0)
                declare(*archive);
            else if (what < 4 && depth < 6 && m_root.xmlArchives.size() < 60)
                include(*archive, read(depth + 1));
            else if (what < 6)
                include(*archive, *m_root.xmlArchives[pick(static_cast<int>(m_root.xmlArchives.size()))]);
            compare(m_index, *archive);
        }
        m_index.closeArchive(*archive);
        return *archive;
    }

    void declare(VMXMLArchive &archive)
    {
        VMIntVar variable;
        variable.name = u"n"_s + QString::number(pick(m_names));
        archive.variables->addVar(variable);
        auto *named = new VMEnum;
        named->name = variable.name;
        archive.variables->addEnum(named);
        m_index.update(*archive.variables);
    }

    void include(VMXMLArchive &archive, VMXMLArchive &included)
    {
        archive.includedArchives.append(&included);
        m_index.addInclude(archive, included);
    }

    void compare(const ScopeIndex &index, const VMXMLArchive &archive) const
    {
        for (int number = 0; number <= m_names; ++number) {
            const QString name = u"n"_s + QString::number(number);
            EXPECT_EQ(index.findVariable(archive, name), archive.variables->getVisibleVariable(name));
            EXPECT_EQ(index.findEnum(archive, name), archive.variables->getEnumByName(name));
        }
    }

    std::mt19937 m_random;
    int m_names;
    VMRootArchive m_root{nullptr, u"root"_s};
    ScopeIndex m_index;
};

} // namespace

TEST(ScopeIndex, FindsWhatAWalkFinds)
{
    for (unsigned int seed = 0; seed < 1000 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomLoad(seed).run();
    }
}

TEST(ScopeIndex, KnowsWhatItIsTold)
{
    VMRootArchive root(nullptr, u"root"_s);
    auto *told = new VMXMLArchive(&root);
    auto *untold = new VMXMLArchive(&root);
    root.addXMLArchive(told);
    root.addXMLArchive(untold);
    VMIntVar variable;
    variable.name = u"V"_s;
    untold->variables->addVar(variable);
    told->includedArchives.append(untold);

    ScopeIndex index;
    index.addArchive(*told);
    EXPECT_TRUE(index.isKnown(*told));
    index.addInclude(*told, *untold);
    EXPECT_FALSE(index.isKnown(*told));
    EXPECT_EQ(index.findVariable(*told, u"V"_s), nullptr);
    index.update(*untold->variables);
    EXPECT_EQ(index.findVariable(*told, u"V"_s), &untold->variables->at(0));
    EXPECT_EQ(index.findIn(*told->variables, u"V"_s), nullptr);
}
