// Sets a field of a chip and reads its register back: registers DESCRIPTION TARGET
#include <veldmap/veldmap.h>

#include <cstdio>

struct Host final : veldmap::ConsoleHost {
    void print(const QString &text) override { std::fputs(text.toUtf8().constData(), stdout); }
    void take(const veldmap::Finding &finding) override { print(finding.text() + u'\n'); }
};

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    VMMemoryMap map;
    Host host;
    map.chipRootArchive = veldmap::loadRoot(map, QString::fromLocal8Bit(argv[1]), true, host).release();
    veldmap::ConsoleSession session(map, host);
    if (!map.chipRootArchive || !session.open({QString::fromLocal8Bit(argv[2])}))
        return 1;
    const bool isDone = session.run(QStringLiteral("LED.ctrl.on = 1")) && session.flush();
    return isDone && session.valueOf(QStringLiteral("LED.ctrl")) == 0x10u ? 0 : 1;
}
