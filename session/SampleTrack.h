// SPDX-License-Identifier: MIT
#pragma once

#include <QPointF>
#include <QVector>

#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/** What an axis did at one moment. Times are microseconds of the steady clock since the recorder was made. */
struct Sample {
    qint64 us = 0;
    double position = 0;
    double velocity = 0;     // since the sample before, unit/s; not a number after a gap
    bool isAfterGap = false; // nothing is known of the time since the sample before
};

/** Up to 1024 samples in a row, with the extremes of each 32 of them. Does not change any more once it is full. */
class SampleChunk final
{
public:
    static constexpr int Capacity = 1024;
    static constexpr int BlockSize = 32;

    /** Extremes of one block. Without a velocity `slowest` is above `fastest`. */
    struct Block {
        double lowest;
        double highest;
        float slowest;
        float fastest;
    };

    explicit SampleChunk(qint64 startUs, int level = 0, int shift = 0)
        : m_startUs(startUs)
        , m_iLevel(level)
        , m_iShift(shift)
    {
    }

    /** False when it is full, or the time lies too far from its first sample. */
    bool append(const Sample &sample);

    int size() const { return m_iSize; }
    /** How often its samples were halved. */
    int level() const { return m_iLevel; }
    qint64 startUs() const { return timeAt(0); }
    qint64 endUs() const { return timeAt(m_iSize - 1); }
    qint64 timeAt(int index) const { return m_startUs + (qint64(m_times[index] & ~gapBit) << m_iShift); }
    double positionAt(int index) const { return m_positions[index]; }
    bool isAfterGap(int index) const { return (m_times[index] & gapBit) != 0; }
    double velocityAt(int index) const;
    Sample at(int index) const { return {timeAt(index), positionAt(index), velocityAt(index), isAfterGap(index)}; }
    /** The first sample at or after the time; size() if there is none. */
    int indexOf(qint64 us) const;

    const Block &block(int number) const { return m_blocks[number]; }
    bool hasGapIn(int block) const { return (m_gaps >> block & 1U) != 0; }
    bool hasGap() const { return m_gaps != 0; }

    /** Half of the samples of both: of each four the lowest and the highest, at their own times. */
    static std::shared_ptr<SampleChunk> halved(const SampleChunk &first, const SampleChunk &second);

private:
    static constexpr quint32 gapBit = 1U << 31;

    const qint64 m_startUs;
    const int m_iLevel;
    const int m_iShift; // times are in units of 2^shift µs
    int m_iSize = 0;
    float m_firstVelocity = 0;
    quint32 m_gaps = 0; // one bit a block
    std::array<quint32, Capacity> m_times;
    std::array<double, Capacity> m_positions;
    std::array<Block, Capacity / BlockSize> m_blocks;
};

/** The samples of one axis as they were at one moment; keeps them while they are drawn or written. */
class TrackView final
{
public:
    using Chunks = std::vector<std::shared_ptr<const SampleChunk>>;
    enum Quantity { Position, Velocity };
    /** Lines that are not connected: x in seconds, y in the unit or unit/s. */
    using Lines = QVector<QVector<QPointF>>;
    using Span = std::pair<qint64, qint64>;

    TrackView() = default;
    explicit TrackView(Chunks chunks)
        : m_chunks(std::move(chunks))
    {
    }

    bool isEmpty() const { return m_chunks.empty(); }
    qint64 size() const;
    qint64 startUs() const { return m_chunks.front()->startUs(); }
    qint64 endUs() const { return m_chunks.back()->endUs(); }
    Sample last() const { return m_chunks.back()->at(m_chunks.back()->size() - 1); }
    int countBetween(qint64 fromUs, qint64 toUs) const;

    /** The sample nearest to the time; nothing in a gap or outside. */
    std::optional<Sample> nearest(qint64 us) const;
    /** What is farther from zero is drawn there: no stage gets so far, and neither do a painter's coordinates. */
    static constexpr double DrawnAtMost = 1e12;
    /**
     * What a line of `columns` columns shows of the time, with one sample beyond each end: in each column at most the
     * first, the lowest, the highest and the last. Time without samples ends a line. What is no number is left out.
     */
    Lines columns(qint64 fromUs, qint64 toUs, int columns, Quantity quantity) const;
    /** Times without samples that reach into this one. */
    QVector<Span> gaps(qint64 fromUs, qint64 toUs) const;

    /** Calls tell(sample) for each from `fromUs` to `toUs`. */
    class Reader
    {
    public:
        Reader(const TrackView &track, qint64 fromUs);
        bool atEnd() const { return m_chunk >= m_track->m_chunks.size(); }
        Sample sample() const { return m_track->m_chunks[m_chunk]->at(m_iIndex); }
        qint64 us() const { return m_track->m_chunks[m_chunk]->timeAt(m_iIndex); }
        void next();

    private:
        friend class TrackView;
        const SampleChunk &chunk() const { return *m_track->m_chunks[m_chunk]; }
        bool back();

        const TrackView *m_track;
        std::size_t m_chunk = 0;
        int m_iIndex = 0;
    };

private:
    Chunks m_chunks; // none of them empty
};

/**
 * The samples of one axis. Memory grows with them up to 12 MiB, enough for a day at 10 Hz; then the older half of the
 * finest chunks is halved again and again, by lowest and highest. Not thread-safe.
 */
class SampleTrack final
{
public:
    static constexpr int MaxChunks = 960;

    /** False, and nothing is kept, when the time is not after the last one. */
    bool append(qint64 us, double position, bool isAfterGap);

    bool isEmpty() const { return m_chunks.empty(); }
    Sample last() const { return m_last; }
    /** The open chunk is copied. */
    TrackView view() const;

private:
    void thin();

    std::vector<std::shared_ptr<SampleChunk>> m_chunks;
    std::array<int, 64> m_perLevel{};
    Sample m_last;
};
