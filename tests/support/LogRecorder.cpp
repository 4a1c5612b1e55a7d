#include "tests/support/LogRecorder.h"

#include <sstream>

#include "platform/common/TextConversion.h"

CLogRecorder::CLogRecorder() {
    DBG::SetLogFilter({});
    DBG::SetLogSink([this](const DBG::CLogRecord& record) {
        const std::lock_guard lock(m_lock);
        m_vecRecords.push_back(record);
    });
}

CLogRecorder::~CLogRecorder() {
    DBG::SetLogSink({});
}

std::vector<DBG::CLogRecord> CLogRecorder::Records() const {
    const std::lock_guard lock(m_lock);
    return m_vecRecords;
}

std::vector<std::string> CLogRecorder::Lines() const {
    std::vector<std::string> vecLines;
    for (const DBG::CLogRecord& record : Records()) {
        const bool bRelative = record.strSource.rfind(".\\", 0) == 0;
        std::ostringstream line;
        line << "0x" << std::hex << record.iLevel << ' ' << record.strSource.substr(bRelative ? 2 : 0) << ' '
             << OS::Utf8Lenient(record.strMessage);
        vecLines.push_back(line.str());
    }
    return vecLines;
}

std::vector<std::string> CLogRecorder::Messages(int iLevel) const {
    std::vector<std::string> vecMessages;
    for (const DBG::CLogRecord& record : Records()) {
        if (record.iLevel == iLevel) {
            vecMessages.push_back(OS::Utf8Lenient(record.strMessage));
        }
    }
    return vecMessages;
}

void CLogRecorder::Clear() {
    const std::lock_guard lock(m_lock);
    m_vecRecords.clear();
}
