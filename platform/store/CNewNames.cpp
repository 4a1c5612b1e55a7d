#include "platform/store/CNewNames.h"

#include <unistd.h>

#include <cstdio>

CNewNames::~CNewNames() {
    for (auto itName = m_vecNames.rbegin(); itName != m_vecNames.rend(); ++itName) {
        if (itName->strFormer.empty()) {
            ::unlink(itName->strName.c_str());
        } else {
            ::rename(itName->strName.c_str(), itName->strFormer.c_str());
        }
    }
}
