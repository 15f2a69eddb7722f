#include "output.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace gen {

void Output::write(const std::string& relative, const std::string& text) {
    const std::filesystem::path path = root_ / relative;
    std::filesystem::create_directories(path.parent_path());
    if (std::ifstream in(path, std::ios::binary); in) {
        std::ostringstream old;
        old << in.rdbuf();
        if (old.str() == text) {
            written_.insert(relative);
            return;
        }
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out) throw std::runtime_error("cannot write " + path.string());
    written_.insert(relative);
}

}  // namespace gen
