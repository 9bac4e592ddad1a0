// SPDX-License-Identifier: MIT
#include "session/SampleTrack.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

double velocityBetween(qint64 fromUs, double from, qint64 toUs, double to)
{
    return (to - from) * 1e6 / double(toUs - fromUs);
}

/** Shows many samples at one place: the first, the lowest, the highest and the last of a column. */
class Columns final
{
public:
    Columns(qint64 fromUs, qint64 toUs, int columns)
        : m_widthUs(std::max<qint64>(1, (toUs - fromUs) / std::max(1, columns)))
    {
    }

    bool areInOneColumn(qint64 fromUs, qint64 toUs) const
    {
        // Most are in the open one, and a division for each sample would take long.
        return m_isOpen && fromUs < m_endUs ? toUs < m_endUs : fromUs / m_widthUs == toUs / m_widthUs;
    }
    void add(qint64 us, double value) { add(us, us, value, value, value, value); }
    void add(qint64 fromUs, qint64 toUs, double first, double lowest, double highest, double last)
    {
        if (m_isOpen && toUs < m_endUs) {
            m_lowest = std::min(m_lowest, lowest);
            m_highest = std::max(m_highest, highest);
            m_last = last;
            m_lastUs = toUs;
            ++m_count;
            return;
        }
        flush();
        m_isOpen = true;
        m_endUs = (toUs / m_widthUs + 1) * m_widthUs;
        m_firstUs = fromUs;
        m_lastUs = toUs;
        m_first = first;
        m_lowest = lowest;
        m_highest = highest;
        m_last = last;
        m_count = fromUs == toUs ? 1 : 2;
    }
    void endLine()
    {
        flush();
        if (!m_line.isEmpty())
            m_lines.append(std::exchange(m_line, {}));
    }
    TrackView::Lines take()
    {
        endLine();
        return std::move(m_lines);
    }

private:
    void flush()
    {
        if (!m_isOpen)
            return;
        m_isOpen = false;
        if (m_count == 1) {
            put(m_firstUs, m_first);
            return;
        }
        put(m_firstUs, m_first);
        const qint64 middle = (m_firstUs + m_lastUs) / 2;
        if (m_lowest < std::min(m_first, m_last))
            put(middle, m_lowest);
        if (m_highest > std::max(m_first, m_last))
            put(middle, m_highest);
        put(m_lastUs, m_last);
    }
    /** A point on a level line moves its end. */
    void put(qint64 us, double answered)
    {
        if (std::isnan(answered))
            return;
        const double value = std::clamp(answered, -TrackView::DrawnAtMost, TrackView::DrawnAtMost);
        const QPointF point(double(us) / 1e6, value);
        const int size = m_line.size();
        if (size >= 2 && m_line.at(size - 1).y() == value && m_line.at(size - 2).y() == value)
            m_line.last() = point;
        else
            m_line.append(point);
    }

    const qint64 m_widthUs;
    bool m_isOpen = false;
    qint64 m_endUs = 0; // of the open column
    qint64 m_firstUs = 0;
    qint64 m_lastUs = 0;
    double m_first = 0;
    double m_lowest = 0;
    double m_highest = 0;
    double m_last = 0;
    int m_count = 0;
    QVector<QPointF> m_line;
    TrackView::Lines m_lines;
};

} // namespace

// ---- SampleChunk ---------------------------------------------------------------------------------------------------

bool SampleChunk::append(const Sample &sample)
{
    const quint64 time = quint64(sample.us - m_startUs) >> m_iShift;
    if (m_iSize == Capacity || time >= gapBit)
        return false;
    const int index = m_iSize++;
    m_times[index] = quint32(time) | (sample.isAfterGap ? gapBit : 0);
    m_positions[index] = sample.position;
    if (index == 0)
        m_firstVelocity = float(sample.velocity);
    Block &block = m_blocks[index / BlockSize];
    if (index % BlockSize == 0)
        block = {
            sample.position, sample.position, std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest()};
    block.lowest = std::min(block.lowest, sample.position);
    block.highest = std::max(block.highest, sample.position);
    if (sample.isAfterGap) {
        m_gaps |= 1U << (index / BlockSize);
    } else {
        block.slowest = std::min(block.slowest, float(sample.velocity));
        block.fastest = std::max(block.fastest, float(sample.velocity));
    }
    return true;
}

double SampleChunk::velocityAt(int index) const
{
    if (isAfterGap(index))
        return notANumber;
    if (index == 0)
        return double(m_firstVelocity);
    const qint64 before = timeAt(index - 1);
    const qint64 us = timeAt(index);
    return us > before ? velocityBetween(before, m_positions[index - 1], us, m_positions[index]) : 0;
}

int SampleChunk::indexOf(qint64 us) const
{
    int low = 0;
    int high = m_iSize;
    while (low < high) {
        const int middle = (low + high) / 2;
        if (timeAt(middle) < us)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

std::shared_ptr<SampleChunk> SampleChunk::halved(const SampleChunk &first, const SampleChunk &second)
{
    const qint64 startUs = first.startUs();
    int shift = std::max(first.m_iShift, second.m_iShift);
    while ((second.endUs() - startUs) >> shift >= qint64(gapBit))
        ++shift;
    auto result = std::make_shared<SampleChunk>(startUs, std::max(first.m_iLevel, second.m_iLevel) + 1, shift);
    const int count = first.size() + second.size();
    const auto at = [&](int index) { return index < first.size() ? first.at(index) : second.at(index - first.size()); };
    bool gapBefore = false;
    std::optional<Sample> before;
    const auto keep = [&](Sample sample) {
        sample.isAfterGap = gapBefore || sample.isAfterGap;
        gapBefore = false;
        if (sample.isAfterGap)
            sample.velocity = notANumber;
        else if (before && sample.us > before->us)
            sample.velocity = velocityBetween(before->us, before->position, sample.us, sample.position);
        before = sample;
        result->append(sample);
    };
    for (int group = 0; group < count; group += 4) {
        const int end = std::min(group + 4, count);
        int lowest = group;
        int highest = group;
        for (int index = group + 1; index < end; ++index) {
            const double position = at(index).position;
            if (position < at(lowest).position)
                lowest = index;
            if (position >= at(highest).position)
                highest = index;
        }
        for (int index = group; index < end; ++index) {
            if (index == lowest || index == highest)
                keep(at(index));
            else
                gapBefore = gapBefore || at(index).isAfterGap;
        }
    }
    return result;
}

// ---- TrackView -----------------------------------------------------------------------------------------------------

TrackView::Reader::Reader(const TrackView &track, qint64 fromUs)
    : m_track(&track)
{
    const auto chunk = std::partition_point(
        track.m_chunks.begin(), track.m_chunks.end(),
        [fromUs](const std::shared_ptr<const SampleChunk> &each) { return each->endUs() < fromUs; });
    m_chunk = std::size_t(chunk - track.m_chunks.begin());
    if (!atEnd())
        m_iIndex = (*chunk)->indexOf(fromUs);
}

void TrackView::Reader::next()
{
    if (++m_iIndex < chunk().size())
        return;
    m_iIndex = 0;
    ++m_chunk;
}

bool TrackView::Reader::back()
{
    if (m_iIndex > 0) {
        --m_iIndex;
        return true;
    }
    if (m_chunk == 0)
        return false;
    --m_chunk;
    m_iIndex = chunk().size() - 1;
    return true;
}

qint64 TrackView::size() const
{
    qint64 size = 0;
    for (const auto &chunk : m_chunks)
        size += chunk->size();
    return size;
}

int TrackView::countBetween(qint64 fromUs, qint64 toUs) const
{
    int count = 0;
    for (const auto &chunk : m_chunks) {
        if (chunk->endUs() >= fromUs && chunk->startUs() <= toUs)
            count += chunk->indexOf(toUs + 1) - chunk->indexOf(fromUs);
    }
    return count;
}

std::optional<Sample> TrackView::nearest(qint64 us) const
{
    Reader after(*this, us);
    if (after.atEnd())
        return !isEmpty() && us == endUs() ? std::optional(last()) : std::nullopt;
    const Sample next = after.sample();
    if (next.us == us)
        return next;
    if (next.isAfterGap || !after.back())
        return {};
    const Sample before = after.sample();
    return us - before.us <= next.us - us ? before : next;
}

TrackView::Lines TrackView::columns(qint64 fromUs, qint64 toUs, int columns, Quantity quantity) const
{
    Columns result(fromUs, toUs, columns);
    Reader reader(*this, fromUs);
    if (!reader.atEnd() && reader.us() > fromUs)
        reader.back(); // so that the line comes from beyond the edge
    while (!reader.atEnd()) {
        const SampleChunk &chunk = reader.chunk();
        const int index = reader.m_iIndex;
        const int number = index / SampleChunk::BlockSize;
        const int end = std::min((number + 1) * SampleChunk::BlockSize, chunk.size());
        const qint64 us = chunk.timeAt(index);
        if (index % SampleChunk::BlockSize == 0 && !chunk.hasGapIn(number) && chunk.timeAt(end - 1) <= toUs &&
            result.areInOneColumn(us, chunk.timeAt(end - 1))) {
            const SampleChunk::Block &block = chunk.block(number);
            if (quantity == Position)
                result.add(
                    us, chunk.timeAt(end - 1), chunk.positionAt(index), block.lowest, block.highest,
                    chunk.positionAt(end - 1));
            else
                result.add(
                    us, chunk.timeAt(end - 1), chunk.velocityAt(index), double(block.slowest), double(block.fastest),
                    chunk.velocityAt(end - 1));
            reader.m_iIndex = end - 1;
            reader.next();
            continue;
        }
        if (chunk.isAfterGap(index))
            result.endLine();
        if (quantity == Position)
            result.add(us, chunk.positionAt(index));
        else if (!chunk.isAfterGap(index))
            result.add(us, chunk.velocityAt(index));
        if (us > toUs)
            break;
        reader.next();
    }
    return result.take();
}

QVector<TrackView::Span> TrackView::gaps(qint64 fromUs, qint64 toUs) const
{
    QVector<Span> result;
    for (std::size_t number = 0; number < m_chunks.size(); ++number) {
        const SampleChunk &chunk = *m_chunks[number];
        if (!chunk.hasGap() || chunk.endUs() < fromUs)
            continue;
        for (int index = 0; index < chunk.size(); ++index) {
            if (!chunk.isAfterGap(index) || (number == 0 && index == 0))
                continue;
            const qint64 since = index > 0 ? chunk.timeAt(index - 1) : m_chunks[number - 1]->endUs();
            if (since >= toUs)
                return result;
            if (chunk.timeAt(index) > fromUs)
                result.append({since, chunk.timeAt(index)});
        }
    }
    return result;
}

// ---- SampleTrack ---------------------------------------------------------------------------------------------------

bool SampleTrack::append(qint64 us, double position, bool isAfterGap)
{
    if (!m_chunks.empty() && us <= m_last.us)
        return false;
    Sample sample{us, position, notANumber, isAfterGap || m_chunks.empty()};
    if (!sample.isAfterGap)
        sample.velocity = velocityBetween(m_last.us, m_last.position, us, position);
    m_last = sample;
    if (!m_chunks.empty() && m_chunks.back()->append(sample))
        return true;
    m_chunks.push_back(std::make_shared<SampleChunk>(us));
    ++m_perLevel[0];
    m_chunks.back()->append(sample);
    if (m_chunks.size() > MaxChunks)
        thin();
    return true;
}

TrackView SampleTrack::view() const
{
    TrackView::Chunks chunks(m_chunks.begin(), m_chunks.end());
    if (!chunks.empty())
        chunks.back() = std::make_shared<SampleChunk>(*chunks.back());
    return TrackView(std::move(chunks));
}

/** Halves the two oldest chunks of the level that has most. Levels fall from the oldest chunk to the newest. */
void SampleTrack::thin()
{
    const int level = int(std::max_element(m_perLevel.begin(), m_perLevel.end() - 1) - m_perLevel.begin());
    const auto first =
        std::find_if(m_chunks.begin(), m_chunks.end(), [level](const auto &chunk) { return chunk->level() == level; });
    *first = SampleChunk::halved(**first, **(first + 1));
    m_chunks.erase(first + 1);
    m_perLevel[level] -= 2;
    ++m_perLevel[level + 1];
}
