#pragma once

#include <csignal>
#include <sys/resource.h>

// While one of these lives, every write to a file fails as on a full disk, for root too. Only empty files can
// be made. Keep the scope short: the test's own report may be a file as well.
class FullDisk
{
public:
    FullDisk()
    {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_limit);
        const rlimit none{0, m_limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit m_limit{};
    void (*m_handler)(int) = nullptr;
};
