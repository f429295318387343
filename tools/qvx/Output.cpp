#include "Output.h"

#include <iostream>

#include <nlohmann/json.hpp>

namespace qvx {

std::string JsonText(nlohmann::ordered_json const& json)
{
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

bool FinishOutput()
{
    std::cout.flush();
    if (!std::cout) {
        std::cerr << "qvx: cannot write the result\n";
    }
    return std::cout.good();
}

} // namespace qvx
