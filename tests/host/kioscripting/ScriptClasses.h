#pragma once

#include <kioscripting/ClassBuilder.h>
#include <kioscripting/Engine.h>

#include <functional>
#include <string>

/// Natives of the namespace "Acme.Sound".
namespace script_classes {

using LevelPtr = boost::intrusive_ptr<class Level>;

/// "Level": what a class can offer.
class Level : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override { return "Level"; }
    void Initialize(double inDecibels) { mDecibels = inDecibels; }
    double GetDecibels() const { return mDecibels; }
    std::string GetLabel() const;
    /// Fails.
    double GetPeak() const;
    LevelPtr GetTwin() const; ///< another object, the same each time
    bool IsAbove(const LevelPtr& inOther) const { return mDecibels > inOther->mDecibels; }
    LevelPtr GetItself() { return this; }
    kioscripting::Value Echo(const kioscripting::Value& inValue) { return inValue; }
    void Set(double inDecibels) { mDecibels = inDecibels; }
    /// Throws what the name says.
    void Fail(const std::string& inKind) const;

private:
    double mDecibels = 0;
    mutable LevelPtr mTwin;
};

/// "Meter": without a constructor for scripts; "call" runs sCalled.
class Meter : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override { return "Meter"; }
    void Call() const;
    static inline std::function<void()> sCalled;
    /// What every object of the class does as it goes.
    static inline std::function<void()> sDestroyed;
    ~Meter() override;
};

/// Of a class that nobody registered.
class Stranger : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override { return "Stranger"; }
};

kioscripting::ClassDefinition DefineExtra();

} // namespace script_classes
