#include "text/text_bytes.h"

namespace veldmap {

void TextBytes::makeRoom(qsizetype bytes)
{
    if (m_sink && m_size >= m_piece)
        give();
    if (m_bytes.size() - m_size < bytes)
        m_bytes.resize(2 * (m_size + bytes));
}

void TextBytes::give()
{
    if (!m_isEnded)
        m_isEnded = !m_sink->take(view());
    m_size = 0;
}

} // namespace veldmap
