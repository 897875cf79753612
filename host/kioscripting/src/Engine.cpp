#include <kioscripting/Engine.h>

namespace kioscripting {

script_exception::script_exception(std::string inTextUTF8, std::uint32_t inCode, ScriptPlace inPlace)
    : kio_exception(std::move(inTextUTF8), inCode), mPlace(std::move(inPlace))
{}

script_exception::~script_exception() = default;

std::string script_exception::Full() const
{
    std::string text = mPlace.file;
    if (mPlace.line > 0) {
        text += (text.empty() ? "line " : ":") + std::to_string(mPlace.line);
        if (mPlace.column > 0) {
            text += ":" + std::to_string(mPlace.column);
        }
    }
    return text.empty() ? what() : text + ": " + what();
}

} // namespace kioscripting
