#pragma once

#include <QtGlobal>
#include <ctime>

// Measures how long this process has had a processor, so that a limit holds on a busy machine, too. Under a
// sanitizer, which makes everything slower, a third of that counts.
class ProcessorTimer
{
public:
    void start() { m_start = std::clock(); }
    // Milliseconds since start().
    qint64 elapsed() const { return qint64(std::clock() - m_start) * 1'000 / CLOCKS_PER_SEC / slowness; }

private:
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr int slowness = 3;
#else
    static constexpr int slowness = 1;
#endif
    std::clock_t m_start = 0;
};
