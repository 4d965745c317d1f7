#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

// While one of these lives, files and folders refuse this thread what their modes refuse their owner, for
// root too, as they would an ordinary user.
class OrdinaryRights
{
public:
    OrdinaryRights()
    {
        constexpr unsigned disregard = 1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH;
        m_isActive = syscall(SYS_capget, &m_header, m_before) == 0;
        __user_cap_data_struct less[_LINUX_CAPABILITY_U32S_3] = {m_before[0], m_before[1]};
        less[0].effective &= ~disregard;
        m_isActive = m_isActive && syscall(SYS_capset, &m_header, less) == 0;
    }
    ~OrdinaryRights()
    {
        if (m_isActive)
            syscall(SYS_capset, &m_header, m_before);
    }
    OrdinaryRights(const OrdinaryRights &) = delete;
    OrdinaryRights &operator=(const OrdinaryRights &) = delete;

    bool isActive() const { return m_isActive; }

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_before[_LINUX_CAPABILITY_U32S_3] = {};
    bool m_isActive = false;
};
