#pragma once

#include <QtGlobal>
#include <ctime>

// Measures how long this process has had a processor, so that a limit holds on a busy machine, too.
class ProcessorTimer
{
public:
    void start() { m_start = std::clock(); }
    // Milliseconds since start().
    qint64 elapsed() const { return qint64(std::clock() - m_start) * 1'000 / CLOCKS_PER_SEC; }

private:
    std::clock_t m_start = 0;
};
