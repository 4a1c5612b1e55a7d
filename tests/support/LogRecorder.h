#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/logging/DebugLog.h"

/** Records every log line, of all levels, from its making to its end. Safe on any thread. */
class CLogRecorder {
  public:
    CLogRecorder();
    ~CLogRecorder();
    CLogRecorder(const CLogRecorder&) = delete;
    CLogRecorder& operator=(const CLogRecorder&) = delete;

    std::vector<DBG::CLogRecord> Records() const;

    /** @return lines such as "0x1004 DLPTemplateMgr.cpp Unable to find template.", in UTF-8; the source without its
     * ".\" */
    std::vector<std::string> Lines() const;

    /** @return the lines of one level, message only */
    std::vector<std::string> Messages(int iLevel) const;

    void Clear();

  private:
    mutable std::mutex m_lock;
    std::vector<DBG::CLogRecord> m_vecRecords;
};
