#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace TR {

struct ColumnState {
    std::uint32_t id = 0;
    float width = 0;
    std::uint32_t index = 0; ///< from the left
};
struct TreeState {
    std::vector<ColumnState> columns;
};
struct CheckboxState {
    bool checked = false;
};

/// What the plug-in manager keeps from one time to the next.
struct PluginManagerState {
    std::map<std::uint32_t, TreeState> trees;
    std::map<std::uint32_t, CheckboxState> checkboxes;
};

/// The key of the plug-in manager's only tree, and of its only checkbox.
inline constexpr std::uint32_t kTheTree = 0;
inline constexpr std::uint32_t kTheOnlyThirdPartyCheckbox = 0;

std::string WriteState(const PluginManagerState& inState);
/// @throws std::runtime_error "JSON not well-formed...", std::bad_cast for members of another shape.
PluginManagerState ReadState(const std::string& inText);

} // namespace TR
