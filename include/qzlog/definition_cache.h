#ifndef QZLOG_DEFINITION_CACHE_H
#define QZLOG_DEFINITION_CACHE_H

/// So many definitions the library caches; another one takes the place of the one that has been there longest, which is
/// then as its file has it again when it is needed: read, or kept within qz_LOG_LogConfig::SetDefinitionMemory. See
/// qz_LOG_LogConfig::SetAuxDefinitionPath for what that means for entries that two files define.
constexpr unsigned int qz_DefinitionCacheSize = 128;

#endif  // QZLOG_DEFINITION_CACHE_H
