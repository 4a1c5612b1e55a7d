#pragma once

#include <unistd.h>

/** While it lives, a test that runs as root may no more than anybody else. */
class CUnprivileged {
  public:
    CUnprivileged() : m_bRoot(::geteuid() == 0) {
        if (m_bRoot && ::seteuid(NOBODY) != 0) {
            m_bRoot = false;
        }
    }
    CUnprivileged(const CUnprivileged&) = delete;
    CUnprivileged& operator=(const CUnprivileged&) = delete;
    ~CUnprivileged() {
        if (m_bRoot && ::seteuid(0) != 0) {
            ::_exit(1);
        }
    }

  private:
    static constexpr uid_t NOBODY = 65534;
    bool m_bRoot;
};
