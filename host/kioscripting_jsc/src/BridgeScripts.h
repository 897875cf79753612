#pragma once

namespace kioscripting_jsc {

/// The files in script/: each is a function that is called with its natives and returns its functions.
extern const char kClassesScript[];
extern const char kErrorsScript[];
extern const char kValuesScript[];
extern const char kModulesScript[];
extern const char kInspectScript[];
extern const char kPromptScript[];
extern const char kJobsScript[];

} // namespace kioscripting_jsc
