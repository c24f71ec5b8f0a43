// Which page each control of each dialog is to open, and of which help file: stated here once more, away from the
// module's own tables.
#pragma once

#include "support/languages.h"

#include <compare>
#include <ostream>
#include <string>
#include <vector>

namespace qx::test {

// The help file of this run's user.
inline std::string UsersHelpFile()
{
    return "QXZH" + LanguageOfTheRun().helpCode + QX_HELP_ENDING ".CHM";
}

struct HelpTopic {
    int control;
    int topic;
    auto operator<=>(const HelpTopic&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const HelpTopic& topic)
    {
        return out << topic.control << " -> " << topic.topic;
    }
};

using HelpTopics = std::vector<HelpTopic>;

inline const HelpTopics kSheetTopics{{1, 15596}, {2, 15597}, {9, 15598}};
inline constexpr int kSheetHelpTopic = 15619; // of the Help button when it is pressed

inline const HelpTopics kFaxJobPageTopics{
    {301, 15583}, {270, 15583}, {262, 15584}, {268, 15584}, {263, 15585}, {267, 15585}, {273, 15586}, {272, 15587},
    {253, 15588}, {212, 15588}, {278, 15588}, {271, 15618}, {209, 15589}, {256, 15590}, {215, 15591}, {217, 15592},
    {216, 15592}, {225, 15593}, {226, 15593}, {266, 15625}, {260, 15625}, {224, 15594}, {276, 15595}, {219, 15595},
};

inline const HelpTopics kSetupPageTopics{
    {279, 15599}, {261, 15600}, {280, 15600}, {262, 15627}, {268, 15627}, {263, 15626}, {267, 15626},
    {282, 15601}, {281, 15601}, {244, 15620}, {245, 15603}, {246, 15604}, {291, 15628}, {292, 15605},
    {235, 15606}, {238, 15607}, {239, 15608}, {241, 15609}, {240, 15609}, {290, 15610}, {283, 15703},
};

inline const HelpTopics kEditDefaultsTopics{
    {261, 15600}, {280, 15600}, {262, 15627}, {268, 15627}, {263, 15626}, {267, 15626}, {282, 15601}, {281, 15601},
    {244, 15620}, {245, 15603}, {246, 15604}, {291, 15628}, {292, 15605}, {235, 15606}, {238, 15607}, {239, 15608},
    {241, 15609}, {240, 15609}, {215, 15591}, {217, 15592}, {216, 15592}, {225, 15593}, {226, 15593}, {266, 15625},
    {260, 15625}, {224, 15594}, {290, 15610}, {9, 15598},   {294, 15702},
};
inline constexpr int kEditDefaultsHelpTopic =
    15621; // of its Help button when it is pressed; asked for help, it has 15598

inline const HelpTopics kAddRecipientsTopics{
    {251, 15611}, {249, 15611}, {250, 15622}, {209, 15624}, {303, 15703},
    {305, 15708}, {258, 15590}, {253, 15588}, {254, 15588},
};

inline const HelpTopics kEditPhoneBookTopics{
    {251, 15709}, {249, 15709}, {250, 15723}, {305, 15708}, {256, 15623},
    {257, 15613}, {307, 15704}, {308, 15705}, {309, 15706}, {310, 15707},
};

inline const HelpTopics kAddEntryTopics{{284, 15710}, {283, 15710}, {262, 15711},
                                        {268, 15711}, {263, 15712}, {267, 15712}};
inline const HelpTopics kEditEntryTopics{{284, 15720}, {283, 15720}, {262, 15721},
                                         {268, 15721}, {263, 15722}, {267, 15722}};

inline const HelpTopics kGroupTopics{
    {251, 15714}, {249, 15714}, {250, 15723}, {308, 15715}, {305, 15708},
    {256, 15752}, {309, 15716}, {310, 15716}, {255, 15713}, {252, 15713},
};

inline const HelpTopics kMapCustomFieldsTopics{{303, 15719}, {312, 15717}, {302, 15718}};

// These dialogs answer no help requests.
inline const HelpTopics kDetailsTopics{};

} // namespace qx::test
