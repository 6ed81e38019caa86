// Source pictures made on the spot, in BGR32I at any size.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "picture.h"

namespace zenk::tool {

struct TestCard {
    std::string name;
    std::string description;
};

const std::vector<TestCard>& AllTestCards();
bool IsTestCard(const std::string& name);
// Throws Error naming the cards when `name` is none of them.
void RequireTestCard(const std::string& name);
Frame MakeTestCard(const std::string& name, int32_t width, int32_t height);

}  // namespace zenk::tool
