// Program entry: everything happens in the program frame.
#include <string>
#include <vector>

#include "app/session.h"
#include "platform/process_inputs.h"

int main(int argc, char** argv) {
    // The words as UTF-8, whatever the system's code page.
    std::vector<std::string> words = tfx::pf_commandLineWords(argc, argv);
    std::vector<char*> wordPointers;
    for (std::string& word : words) wordPointers.push_back(word.data());
    wordPointers.push_back(nullptr);
    return tfx::gf_programEntry(static_cast<int>(words.size()), wordPointers.data());
}
