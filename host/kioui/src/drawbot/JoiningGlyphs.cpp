#include "JoiningGlyphs.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace kioui::drawbot {
namespace {

enum class TableKind { kSubstitutions, kPositions };

/// Kinds of lookups that both tables have under numbers of their own.
enum class LookupKind {
    kAlone,
    kLigature,
    kCursive,
    kContext,
    kChainedContext,
    kReverse,
    kExtension,
    kOther
};

LookupKind KindOf(TableKind inTable, unsigned inType)
{
    using enum LookupKind;
    static constexpr LookupKind kOfSubstitutions[] = {
        kOther, kAlone, kAlone, kAlone, kLigature, kContext, kChainedContext, kExtension, kReverse};
    // Marks move and take no place: whatever joins them to a letter leaves its width.
    static constexpr LookupKind kOfPositions[] = {kOther, kAlone, kOther,   kCursive,        kAlone,
                                                  kAlone, kAlone, kContext, kChainedContext, kExtension};
    if (inTable == TableKind::kSubstitutions) {
        return inType < std::size(kOfSubstitutions) ? kOfSubstitutions[inType] : kOther;
    }
    return inType < std::size(kOfPositions) ? kOfPositions[inType] : kOther;
}

/// Features that are applied to no text unless it is asked for, which nobody here does; and those that move
/// marks.
bool IsOff(std::string_view inTag)
{
    static const std::set<std::string_view> kOff = {
        "aalt", "afrc", "c2pc", "c2sc", "case", "cpsp", "cswh", "dlig", "dnom", "expt", "falt", "frac",
        "fwid", "halt", "hist", "hkna", "hlig", "hojo", "hwid", "ital", "jalt", "jp04", "jp78", "jp83",
        "jp90", "kern", "lfbd", "lnum", "mgrk", "nalt", "nlck", "numr", "onum", "opbd", "ordn", "ornm",
        "palt", "pcap", "pkna", "pnum", "pwid", "qwid", "rtbd", "ruby", "salt", "sinf", "size", "smcp",
        "smpl", "ssty", "subs", "sups", "swsh", "titl", "tnam", "tnum", "trad", "twid", "unic", "valt",
        "vert", "vhal", "vkna", "vkrn", "vpal", "vrt2", "vrtr", "zero", "abvm", "blwm", "mark", "mkmk"};
    const auto isNumbered = [inTag](std::string_view inStart) {
        return inTag.starts_with(inStart) && inTag[2] >= '0' && inTag[2] <= '9';
    };
    return kOff.contains(inTag) || isNumbered("ss") || isNumbered("cv");
}

/// Reads one table; goes no further than its end, and not on and on where parts of it point to each other.
class TableReader {
public:
    TableReader(TableKind inKind, const QByteArray& inBytes, std::bitset<65536>& outNamed)
        : mKind(inKind), mBytes(inBytes), mNamed(outNamed)
    {}

    void Read()
    {
        if (mBytes.isEmpty()) {
            return;
        }
        const std::size_t lookupList = At(8);
        for (const unsigned lookup : LookupsInUse()) {
            if (lookup < At(lookupList)) {
                ReadLookup(lookupList + At(lookupList + 2 + 2 * std::size_t(lookup)));
            }
        }
        if (mIsBeyond) {
            mNamed.set();
        }
    }

private:
    /// The number of 16 bits there.
    unsigned At(std::size_t inOffset)
    {
        constexpr unsigned kMostReads = 4'000'000; // many times what the largest font needs
        if (inOffset + 2 > std::size_t(mBytes.size()) || ++mReads > kMostReads) {
            mIsBeyond = true;
            return 0;
        }
        const auto byte = [this](std::size_t inAt) {
            return unsigned(std::uint8_t(mBytes[qsizetype(inAt)]));
        };
        return byte(inOffset) << 8 | byte(inOffset + 1);
    }

    std::set<unsigned> LookupsInUse()
    {
        std::set<unsigned> lookups;
        const std::size_t features = At(6);
        const unsigned count = At(features);
        for (unsigned i = 0; i < count && !mIsBeyond; ++i) {
            const std::size_t record = features + 2 + 6 * std::size_t(i);
            const std::size_t feature = features + At(record + 4);
            if (mIsBeyond || IsOff(std::string_view(mBytes.constData() + record, 4))) {
                continue;
            }
            const unsigned lookupCount = At(feature + 2);
            for (unsigned j = 0; j < lookupCount && !mIsBeyond; ++j) {
                lookups.insert(At(feature + 4 + 2 * std::size_t(j)));
            }
        }
        return lookups;
    }

    void ReadLookup(std::size_t inLookup)
    {
        const unsigned type = At(inLookup);
        const unsigned count = At(inLookup + 4);
        for (unsigned i = 0; i < count && !mIsBeyond; ++i) {
            ReadSubtable(KindOf(mKind, type), inLookup + At(inLookup + 6 + 2 * std::size_t(i)));
        }
    }

    void ReadSubtable(LookupKind inKind, std::size_t inTable)
    {
        switch (inKind) {
        case LookupKind::kAlone:
            break;
        case LookupKind::kLigature:
            ReadLigatures(inTable);
            break;
        case LookupKind::kCursive:
            NameCoverage(inTable + At(inTable + 2));
            break;
        case LookupKind::kContext:
            ReadContext(inTable, 1);
            break;
        case LookupKind::kChainedContext:
            ReadContext(inTable, 3);
            break;
        case LookupKind::kReverse:
            NameCoverage(inTable + At(inTable + 2));
            ReadCoverages(inTable, 4, 2);
            break;
        case LookupKind::kExtension: {
            const LookupKind kind = KindOf(mKind, At(inTable + 2));
            if (kind != LookupKind::kExtension) {
                ReadSubtable(kind, inTable + (std::size_t(At(inTable + 4)) << 16 | At(inTable + 6)));
            }
            break;
        }
        case LookupKind::kOther:
            mNamed.set(); // unknown, or pairs, which a font's kerning has many of: nothing to be gained
            break;
        }
    }

    void ReadLigatures(std::size_t inTable)
    {
        NameCoverage(inTable + At(inTable + 2));
        const unsigned setCount = At(inTable + 4);
        for (unsigned i = 0; i < setCount && !mIsBeyond; ++i) {
            const std::size_t set = inTable + At(inTable + 6 + 2 * std::size_t(i));
            const unsigned count = At(set);
            for (unsigned j = 0; j < count && !mIsBeyond; ++j) {
                const std::size_t ligature = set + At(set + 2 + 2 * std::size_t(j));
                NameGlyphs(ligature + 4, At(ligature + 2), 1);
            }
        }
    }

    /// A row of glyphs that is as long as its count, less those that are named elsewhere.
    /// @return where it ends.
    std::size_t NameGlyphs(std::size_t inFirst, unsigned inCount, unsigned inElsewhere)
    {
        for (unsigned i = inElsewhere; i < inCount && !mIsBeyond; ++i, inFirst += 2) {
            mNamed.set(At(inFirst));
        }
        return inFirst;
    }

    /// Rules of what stands beside what.
    /// @param inParts  1: the glyphs themselves; 3: also what stands before and behind.
    void ReadContext(std::size_t inTable, unsigned inParts)
    {
        switch (At(inTable)) {
        case 1:
            NameCoverage(inTable + At(inTable + 2));
            ReadRules(inTable, 4, inParts, false);
            break;
        case 2:
            NameCoverage(inTable + At(inTable + 2));
            for (unsigned i = 0; i < inParts; ++i) {
                NameClasses(inTable + At(inTable + 4 + 2 * std::size_t(i)));
            }
            ReadRules(inTable, 4 + 2 * std::size_t(inParts), inParts, true);
            break;
        case 3:
            if (inParts == 1) { // its count stands before another count
                const unsigned count = At(inTable + 2);
                for (unsigned i = 0; i < count && !mIsBeyond; ++i) {
                    NameCoverage(inTable + At(inTable + 6 + 2 * std::size_t(i)));
                }
            } else {
                ReadCoverages(inTable, 2, inParts);
            }
            break;
        default:
            mIsBeyond = true;
        }
    }

    void ReadCoverages(std::size_t inTable, std::size_t inFirst, unsigned inParts)
    {
        std::size_t at = inTable + inFirst;
        for (unsigned part = 0; part < inParts; ++part) {
            const unsigned count = At(at);
            at += 2;
            for (unsigned i = 0; i < count && !mIsBeyond; ++i, at += 2) {
                NameCoverage(inTable + At(at));
            }
        }
    }

    void ReadRules(std::size_t inTable, std::size_t inSets, unsigned inParts, bool inAreClasses)
    {
        const unsigned setCount = At(inTable + inSets);
        for (unsigned i = 0; i < setCount && !mIsBeyond; ++i) {
            const unsigned offset = At(inTable + inSets + 2 + 2 * std::size_t(i));
            const unsigned count = offset != 0 ? At(inTable + offset) : 0;
            for (unsigned j = 0; j < count && !mIsBeyond; ++j) {
                const std::size_t set = inTable + offset;
                ReadRule(set + At(set + 2 + 2 * std::size_t(j)), inParts, inAreClasses);
            }
        }
    }

    void ReadRule(std::size_t inRule, unsigned inParts, bool inAreClasses)
    {
        std::size_t at = inRule;
        for (unsigned part = 0; part < inParts; ++part) {
            const unsigned count = At(at);
            // The first of the glyphs themselves is in the coverage. Without other parts a second count, of
            // what is to be done, stands before them.
            const bool isInput = inParts == 1 || part == 1;
            at += inParts == 1 ? 4 : 2;
            for (unsigned i = isInput ? 1 : 0; i < count && !mIsBeyond; ++i, at += 2) {
                NameRuleMember(At(at), inAreClasses);
            }
        }
    }

    void NameRuleMember(unsigned inMember, bool inIsClass)
    {
        if (!inIsClass) {
            mNamed.set(inMember);
        } else if (inMember == 0) {
            mNamed.set(); // all that are in no other class
        }
    }

    void NameCoverage(std::size_t inCoverage)
    {
        const unsigned format = At(inCoverage);
        const unsigned count = At(inCoverage + 2);
        if (format == 1) {
            NameGlyphs(inCoverage + 4, count, 0);
        } else if (format == 2) {
            NameRanges(inCoverage + 4, count, false);
        } else {
            mIsBeyond = true;
        }
    }

    void NameClasses(std::size_t inClasses)
    {
        const unsigned format = At(inClasses);
        if (format == 1) {
            const unsigned first = At(inClasses + 2);
            const unsigned count = At(inClasses + 4);
            for (unsigned i = 0; i < count && !mIsBeyond && first + i < mNamed.size(); ++i) {
                if (At(inClasses + 6 + 2 * std::size_t(i)) != 0) {
                    mNamed.set(first + i);
                }
            }
        } else if (format == 2) {
            NameRanges(inClasses + 4, At(inClasses + 2), true);
        } else {
            mIsBeyond = true;
        }
    }

    /// Records of first, last and a number, which is the class if it is one of classes.
    void NameRanges(std::size_t inFirst, unsigned inCount, bool inAreClasses)
    {
        for (unsigned i = 0; i < inCount && !mIsBeyond; ++i) {
            const std::size_t range = inFirst + 6 * std::size_t(i);
            const unsigned last = At(range + 2);
            if (inAreClasses && At(range + 4) == 0) {
                continue;
            }
            for (unsigned glyph = At(range); glyph <= last; ++glyph) {
                mNamed.set(glyph);
            }
        }
    }

    const TableKind mKind;
    const QByteArray& mBytes;
    std::bitset<65536>& mNamed;
    unsigned mReads = 0;
    bool mIsBeyond = false;
};

} // namespace

JoiningGlyphs::JoiningGlyphs(const QByteArray& inSubstitutions, const QByteArray& inPositions)
{
    TableReader(TableKind::kSubstitutions, inSubstitutions, mIsNamed).Read();
    TableReader(TableKind::kPositions, inPositions, mIsNamed).Read();
}

} // namespace kioui::drawbot
