#pragma once

#include <kiocore/config/Errors.h>
#include <kioscripting_jsc/JSCEngine.h>

#include <gtest/gtest.h>

#include "ScriptClasses.h"

/// An engine for a test, with what it wrote and threw as texts.
class ScriptRunner {
public:
    explicit ScriptRunner(kioscripting::EngineSettings inSettings = {})
    {
        inSettings.console = [this](kioscripting::ConsoleLevel inLevel, const std::string& inText) {
            static constexpr const char* kLevels[] = {"", "info: ", "warning: ", "error: "};
            written += kLevels[int(inLevel)] + inText + "\n";
        };
        engine = kioscripting_jsc::MakeEngine(std::move(inSettings));
        engine->SetGlobal(
            "L", kioscripting::ScriptObjectPtr(
                     kioscripting::CreateScriptObject<script_classes::Level>(engine->GetContextHdl())));
    }

    kioscripting::Value Run(std::string_view inSource) { return engine->Evaluate(inSource, "test.js"); }
    /// The value for people, or what was thrown: "! file:line:column: text".
    std::string Text(std::string_view inSource)
    {
        try {
            return engine->EvaluateToText(inSource, "test.js");
        } catch (const kioscripting::script_exception& error) {
            return "! " + error.Full();
        } catch (const kiocore::kio_exception& error) {
            return std::string("kio! ") + error.what();
        }
    }
    kioscripting::script_exception Failure(std::string_view inSource)
    {
        try {
            engine->Evaluate(inSource, "test.js");
        } catch (const kioscripting::script_exception& error) {
            return error;
        }
        ADD_FAILURE() << "did not fail: " << inSource;
        return {"", 0, {}};
    }

    std::string written;
    std::unique_ptr<kioscripting::IScriptEngine> engine;
};
