// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <limits>
#include <string_view>
#include <vector>

namespace emulator {

/** What happens to one byte, or to one line, on its way. */
struct WireFault {
    enum class Kind { Drop, Double, Replace, DropLine };
    static constexpr int lineEnd = -1;

    Kind kind = Kind::Drop;
    /** Lines from the next one on: 0 is the line that begins next. */
    int line = 0;
    /** Of that line, from 0; or lineEnd. */
    int byte = 0;
    /** Instead of the byte, for Replace. */
    char with = 0;
};

/** One direction of the serial line: a byte after the other at 115200 baud. All times are the board's, in seconds. */
class Wire
{
public:
    static constexpr double byteTime = 10.0 / 115200;
    static constexpr double never = std::numeric_limits<double>::infinity();

    /** With `hasRealTimeBytes` those bytes that the board picks out of the lines do not count in them. */
    explicit Wire(bool hasRealTimeBytes)
        : m_hasRealTimeBytes(hasRealTimeBytes)
    {
    }

    /** Puts `bytes` on the wire from `time` on, behind what is on it. */
    void put(std::string_view bytes, double time);
    /** When the next byte has come over; never when none is on the wire. */
    double next() const { return m_bytes.empty() ? never : m_bytes.front().time; }
    /** Takes the next byte. */
    char take();
    /** When the last byte will have come over. */
    double end() const { return m_busyUntil; }
    void clear() { m_bytes.clear(); }

    void add(const WireFault &fault) { m_faults.push_back(fault); }
    /** Forgets the faults that have not come yet. */
    void mend() { m_faults.clear(); }
    /** Everything that is put comes over so much later (s). */
    void setDelay(double seconds) { m_delay = seconds; }
    /** Nothing comes over any more: a broken wire. */
    void cut(bool isCut) { m_isCut = isCut; }

private:
    struct Byte {
        double time;
        char value;
    };

    void carry(char byte, double time);

    bool m_hasRealTimeBytes;
    std::deque<Byte> m_bytes;
    std::vector<WireFault> m_faults;
    double m_busyUntil = 0;
    double m_delay = 0;
    bool m_isCut = false;
    int m_byte = 0; // of the line that is being put
};

/** Whether the board takes `byte` for a command of its own, wherever it stands. */
bool isRealTime(char byte);

} // namespace emulator
