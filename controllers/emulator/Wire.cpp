// SPDX-License-Identifier: MIT
#include "controllers/emulator/Wire.h"

#include <algorithm>

namespace emulator {

bool isRealTime(char byte)
{
    return byte == '?' || byte == '!' || byte == '~' || byte == '\x18' ||
           (static_cast<unsigned char>(byte) & 0x80U) != 0;
}

void Wire::carry(char byte, double time)
{
    m_busyUntil = std::max(m_busyUntil, time) + byteTime;
    if (!m_isCut) {
        m_bytes.push_back({m_busyUntil + m_delay, byte});
    }
}

void Wire::put(std::string_view bytes, double time)
{
    for (const char byte : bytes) {
        if (m_hasRealTimeBytes && isRealTime(byte)) {
            carry(byte, time);
            continue;
        }
        const bool isLineEnd = byte == '\n';
        const auto fault = std::find_if(m_faults.begin(), m_faults.end(), [&](const WireFault &candidate) {
            return candidate.line == 0 && (candidate.kind == WireFault::Kind::DropLine ||
                                           candidate.byte == (isLineEnd ? WireFault::lineEnd : m_byte));
        });
        if (fault == m_faults.end()) {
            carry(byte, time);
        } else if (fault->kind == WireFault::Kind::Double) {
            carry(byte, time);
            carry(byte, time);
        } else if (fault->kind == WireFault::Kind::Replace) {
            carry(fault->with, time);
        }
        ++m_byte;
        if (isLineEnd) {
            m_byte = 0;
            m_faults.erase(
                std::remove_if(m_faults.begin(), m_faults.end(), [](WireFault &each) { return each.line-- == 0; }),
                m_faults.end());
        }
    }
}

char Wire::take()
{
    const char byte = m_bytes.front().value;
    m_bytes.pop_front();
    return byte;
}

} // namespace emulator
