#include <support/captured_output.h>
#include <unistd.h>

#include <stdexcept>

CapturedOutput::CapturedOutput(std::FILE* stream)
    : stream_(stream), file_(std::tmpfile()), original_(-1) {
    std::fflush(stream_);
    if (file_ != nullptr) {
        original_ = dup(fileno(stream_));
    }
    if (original_ == -1 || dup2(fileno(file_), fileno(stream_)) == -1) {
        throw std::runtime_error("cannot capture an output stream");
    }
}

CapturedOutput::~CapturedOutput() {
    std::fflush(stream_);
    dup2(original_, fileno(stream_));
    close(original_);
    std::fclose(file_);
}

std::string CapturedOutput::text() {
    std::fflush(stream_);
    // The stream writes through a copy of the descriptor, which shares its offset: read by place.
    std::string result;
    char block[4096];
    ssize_t count = 0;
    while ((count = pread(fileno(file_), block, sizeof block, static_cast<off_t>(result.size()))) >
           0) {
        result.append(block, static_cast<std::size_t>(count));
    }
    return result;
}
