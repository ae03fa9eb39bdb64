#include "language/plot_reader.h"

namespace language {

namespace {

constexpr size_t kLongestHead = 4096; // blanks without end must not fill the memory

/// True once the two bytes are there that tell the language, or so many blanks that no more are waited for.
bool tells(std::string_view head) {
    size_t blanks = 0;
    while (blanks < head.size() && static_cast<unsigned char>(head[blanks]) <= ' ')
        ++blanks;
    return head.size() - blanks >= 2 || head.size() >= kLongestHead;
}

} // namespace

PlotReader::PlotReader(std::optional<Language> language, PenSink &sink, const Rectangle &hardClip, Clipping clipping,
                       double secondsPerByte)
    : language_(language), sink_(sink), hardClip_(hardClip), clipping_(clipping), secondsPerByte_(secondsPerByte) {}

void PlotReader::choose() {
    if (!language_) language_ = guessLanguage(head_);
    reader_ = makeReader(*language_, sink_, hardClip_, clipping_, secondsPerByte_);
    if (onChoice) onChoice(*reader_);
    reader_->take(head_);
    head_.clear();
}

void PlotReader::take(std::string_view bytes) {
    if (reader_ == nullptr && language_) choose();
    while (reader_ == nullptr && !bytes.empty()) {
        head_ += bytes.front(); // one by one: the choice must not depend on how the bytes are cut
        bytes.remove_prefix(1);
        if (tells(head_)) choose();
    }
    if (reader_ != nullptr) reader_->take(bytes);
}

void PlotReader::finish() {
    if (reader_ == nullptr) choose();
    reader_->finish();
}

} // namespace language
