#pragma once

class DLPMetaDataLoaderImpl;

/** The process's one copy of the policy lists, read at the first call and kept to the end. Safe on any thread. */
DLPMetaDataLoaderImpl& GetProcessMetaData();
