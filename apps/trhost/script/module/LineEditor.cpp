#include "LineEditor.h"

#include <histedit.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>

namespace trhost::script {
namespace {

constexpr int kRememberedLines = 1000;

class PlainLines final : public ILineEditor {
public:
    std::optional<std::string> ReadLine(const std::string&) override
    {
        std::string line;
        return std::getline(std::cin, line) ? std::optional(line) : std::nullopt;
    }
    void Remember(const std::string&) override {}
};

/// What all texts begin with.
std::string CommonStart(const std::vector<std::string>& inTexts)
{
    std::string common = inTexts.front();
    for (const std::string& text : inTexts) {
        const auto end = std::mismatch(common.begin(), common.end(), text.begin(), text.end()).first;
        common.erase(end, common.end());
    }
    return common;
}

bool IsPartOfName(char inLetter)
{
    return std::isalnum(static_cast<unsigned char>(inLetter)) || inLetter == '_' || inLetter == '$' ||
           inLetter == '.' || (inLetter & 0x80) != 0;
}

class Terminal final : public ILineEditor {
public:
    explicit Terminal(LineEditorSettings inSettings)
        : mSettings(std::move(inSettings)), mHistory(history_init()),
          mEditor(el_init("trhost", stdin, stdout, stderr))
    {
        HistEvent event;
        history(mHistory, &event, H_SETSIZE, kRememberedLines);
        history(mHistory, &event, H_SETUNIQUE, 1);
        if (!mSettings.historyFile.empty()) {
            history(mHistory, &event, H_LOAD, mSettings.historyFile.c_str());
        }
        el_set(mEditor, EL_CLIENTDATA, this);
        el_set(mEditor, EL_PROMPT, &Prompt);
        el_set(mEditor, EL_EDITOR, "emacs");
        el_set(mEditor, EL_SIGNAL, 0);
        el_set(mEditor, EL_HIST, &history, mHistory);
        el_set(mEditor, EL_ADDFN, "complete", "Complete a name", &Complete);
        el_set(mEditor, EL_BIND, "^I", "complete", nullptr);
        el_set(mEditor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
        el_source(mEditor, nullptr); // the user's own ~/.editrc
    }
    ~Terminal() override
    {
        HistEvent event;
        if (!mSettings.historyFile.empty()) {
            const mode_t before = umask(S_IRWXG | S_IRWXO); // what was typed is nobody else's business
            history(mHistory, &event, H_SAVE, mSettings.historyFile.c_str());
            umask(before);
        }
        el_end(mEditor);
        history_end(mHistory);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    std::optional<std::string> ReadLine(const std::string& inPrompt) override
    {
        mPrompt = inPrompt;
        int length = 0;
        errno = 0;
        const char* const line = el_gets(mEditor, &length);
        if (!line || length <= 0) {
            if (length < 0 && errno == EINTR) {
                el_set(mEditor, EL_REFRESH);
                std::fputs("^C\n", stdout);
                el_reset(mEditor);
                return std::string();
            }
            std::fputs("\n", stdout);
            return std::nullopt;
        }
        std::string text(line, static_cast<std::size_t>(length));
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
            text.pop_back();
        }
        return text;
    }

    void Remember(const std::string& inText) override
    {
        HistEvent event;
        history(mHistory, &event, H_ENTER, inText.c_str());
    }

private:
    static Terminal& Of(EditLine* inEditor)
    {
        void* terminal = nullptr;
        el_get(inEditor, EL_CLIENTDATA, &terminal);
        return *static_cast<Terminal*>(terminal);
    }
    static char* Prompt(EditLine* inEditor) { return Of(inEditor).mPrompt.data(); }

    /// Inserts what all candidates have in common; where that is nothing, lists them.
    static unsigned char Complete(EditLine* inEditor, int)
    {
        Terminal& terminal = Of(inEditor);
        const LineInfo* const line = el_line(inEditor);
        const std::string text(line->buffer, line->cursor);
        if (!terminal.mSettings.complete) {
            return CC_ERROR;
        }
        const std::vector<std::string> candidates = terminal.mSettings.complete(text);
        if (candidates.empty()) {
            return CC_ERROR;
        }
        std::size_t wordStart = text.size();
        while (wordStart > 0 && IsPartOfName(text[wordStart - 1])) {
            --wordStart;
        }
        const std::string common = CommonStart(candidates);
        const std::size_t typed = text.size() - wordStart;
        if (common.size() > typed) {
            el_insertstr(inEditor, common.c_str() + typed);
            return CC_REFRESH;
        }
        if (candidates.size() == 1) {
            return CC_NORM;
        }
        std::string list = "\n";
        for (const std::string& candidate : candidates) {
            list += candidate + "  ";
        }
        std::fputs((list + "\n").c_str(), stdout);
        return CC_REDISPLAY;
    }

    const LineEditorSettings mSettings;
    History* const mHistory;
    EditLine* const mEditor;
    std::string mPrompt;
};

} // namespace

std::unique_ptr<ILineEditor> MakeLineEditor(LineEditorSettings inSettings)
{
    if (isatty(STDIN_FILENO) == 0) {
        return std::make_unique<PlainLines>();
    }
    return std::make_unique<Terminal>(std::move(inSettings));
}

} // namespace trhost::script
