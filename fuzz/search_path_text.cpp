// Lists of directories: from text and to text, and changes, beside a plain list. Input: texts, the
// first one of the list, each further one a change: what, where, and the path.

#include "fuzz/fuzz.h"
#include "fuzz/models/search_path_model.h"

#include <filesystem>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const std::string current = std::filesystem::current_path();
    const Texts input(data, size, 1);
    SearchPathRun run(input[0], current);
    CHECK(run.text() == run.modelText());
    for (std::size_t i = 1; i < input.texts.size(); ++i) {
        const std::string &text = input[i];
        if (text.size() < 2) continue;
        CHECK(run.change(static_cast<unsigned char>(text[1]),
                         static_cast<unsigned char>(text[0]) % 8U, text.substr(2)));
        CHECK(run.text() == run.modelText());
    }
    // The way back: what climbed out of its drive and the root do not survive it.
    for (const std::string &entry : run.model()) {
        if (!isAbsolutePlainly(entry) || entry.find(';') != std::string::npos) return 0;
    }
    const SearchPathRun back(run.text(), current);
    CHECK(back.text() == run.text());
    return 0;
}
