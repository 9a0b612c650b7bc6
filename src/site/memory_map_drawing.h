#pragma once

namespace veldmap {

class HtmlText;
class SitePlan;

/// Appends the memory map of \a plan: its instances and the gaps between them, by address, each as high as its size
/// asks for. Where there are more than can be read, neighbours stand together as regions.
void appendMemoryMap(HtmlText &text, const SitePlan &plan, bool isAlone);

} // namespace veldmap
