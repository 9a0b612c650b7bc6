#include "cli/commands.h"
#include "cli/program_rules.h"
#include "cli/session.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// A description to start from. It loads without a finding of lint, and compilers and simulators take what comes of it.
constexpr QLatin1StringView kDescription = R"xml(<?xml version="1.0" encoding="UTF-8"?>
<archive>
  <comment>A timer; this text stands at the head of its header</comment>

  <!-- A number with a name. Expressions may use it, and headers have it as a #define. -->
  <var name="CHANNELS" value="4"><comment>compare channels</comment></var>

  <!-- A block of registers, which lie one behind the other. -->
  <module name="timer">
    <comment>Timer with compare channels</comment>

    <!-- protect: r may be read, w may be written. -->
    <reg32 name="ctrl" protect="rw">
      <comment>Control</comment>
      <!-- A bitfield: pos is one bit or two, rst its own value after a reset. -->
      <bits name="enable" pos="0" access="rw" rst="0"><comment>Starts the counter</comment></bits>
      <bits name="mode" pos="2:1" access="rw" rst="0">
        <options>
          <option name="once" value="0"><comment>stops at the end</comment></option>
          <option name="cycle" value="1"><comment>starts again</comment></option>
        </options>
      </bits>
    </reg32>

    <reg32 name="status" protect="rw">
      <comment>Status</comment>
      <!-- c: writing a 1 clears it. -->
      <bits name="expired" pos="0" access="rc" rst="0"/>
    </reg32>

    <!-- A gap of 64 bits, and an array of registers behind it. -->
    <hole size="64"/>
    <reg32 name="compare" protect="rw" count="CHANNELS">
      <comment>Where each channel expires</comment>
      <bits name="limit" pos="31:0" access="rw" rst="all1" display="hex"/>
    </reg32>
  </module>

  <!-- Places a copy of the module in the memory map. -->
  <instance name="TIMER0" type="timer" address="0x40000000"/>
</archive>
)xml"_L1;

/// Writes a file that was not there; false, with an error told, when it was, or can't be written whole.
bool writeNewFile(const QString &path, const QByteArray &content, Messages &messages)
{
    if (path.isEmpty()) {
        messages.tell(rules::kNoWord, {u"name of a file"_s});
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        if (QFile::exists(path))
            messages.tell(rules::kThereAlready, {path});
        else
            messages.tell(rules::kNewUnwritable, {path, file.errorString()});
        return false;
    }
    if (file.write(content) == content.size() && file.flush())
        return true;
    messages.tell(rules::kNewUnwritable, {path, file.errorString()});
    file.remove();
    return false;
}

} // namespace

ExitStatus writeNew(const Options &options, Session &session)
{
    const QByteArray text(kDescription.data(), kDescription.size());
    const bool isWritten = options.destination == "-"_L1 ? printResult(text, session.messages)
                                                         : writeNewFile(options.destination, text, session.messages);
    return isWritten ? kDone : kFailed;
}

} // namespace veldmap::cli
