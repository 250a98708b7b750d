#include "adapters/system/notice_prefix.h"

#include "adapters/system/environment.h"

#include <sys/stat.h>
#include <unistd.h>

namespace tarnex {

namespace {

// The journal names the stream that it reads, which may have been redirected since.
bool JournalReadsStandardError() {
    struct stat stream;
    const std::string named = Environment("JOURNAL_STREAM");
    return !named.empty() && fstat(STDERR_FILENO, &stream) == 0 &&
           named == std::to_string(stream.st_dev) + ":" + std::to_string(stream.st_ino);
}

} // namespace

std::string NoticePrefix(NoticeLevel level) {
    static const bool journal = JournalReadsStandardError();
    return journal ? "<" + std::to_string(int(level)) + ">" : "";
}

} // namespace tarnex
