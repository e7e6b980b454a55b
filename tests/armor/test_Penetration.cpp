#include "ArmorReport.h"
#include "Penetration.h"

#include <gtest/gtest.h>

namespace {

RayResult plate(float effective, bool spaced = false, float freeTravel = 0, bool ricochet = false)
{
    RayResult result;
    result.name = spaced ? "spaced" : "plate";
    result.category = spaced ? SpacedArmor : RegularArmor;
    result.effective = effective;
    result.spaced = spaced;
    result.freeTravel = freeTravel;
    result.ricochet = ricochet;
    return result;
}

RayResult exitFace(float freeTravel)
{
    RayResult result = plate(10, false, freeTravel);
    result.exitHit = true;
    return result;
}

struct Expected
{
    float before, after;
    int verdict;
    float chance;
};

// Hand-computed: the roll runs uniformly from 0.75 to 1.25 times nominal.
TEST(PenetrationTest, WalksThePlatesWithLossesVerdictsAndChances)
{
    struct Case
    {
        const char* what;
        float nominal, loss;
        RayResultsList walked;
        std::vector<Expected> expected;
    };
    const Case cases[] = {
        // 100 mm at 45 degrees, normalised 43: 136.733 mm. (175 - 136.733) / 70
        {"140 mm through the proving ground's plate",
         140,
         0,
         {plate(136.733f)},
         {{140, 3.267f, Penetrated, 0.54667f}}},
        // (150 - 136.733) / 60
        {"120 mm at 500 m", 120, 0, {plate(136.733f)}, {{120, 0, NotPenetrated, 0.22112f}}},
        {"a ricochet stops everything behind it",
         140,
         0,
         {plate(684.06f, false, 0.1f, true), plate(50)},
         {{140, 0, RicochetVerdict, 0}, {0, 0, NotPenetrated, 0}}},
        // 180 - 20 = 160; 50 cm of air at 5 % per 10 cm: 160 x 0.75 = 120;
        // 120 - 100 = 20; needed 180 - 120 + 100 = 160: (225 - 160) / 90
        {"HEAT through a spaced plate and 50 cm of air",
         180,
         0.05f,
         {plate(20, true, 0.5f), plate(100)},
         {{180, 160, Penetrated, 1}, {120, 20, Penetrated, 0.72222f}}},
        // An exit face takes nothing but its gap counts: 0.3 + 0.2 m at
        // 10 % per 10 cm is half of 160; needed 180 - 80 + 70 = 170:
        // (225 - 170) / 90
        {"HEAT through a track's far face",
         180,
         0.1f,
         {plate(20, false, 0.3f), exitFace(0.2f), plate(70)},
         {{180, 160, Penetrated, 1}, {80, 10, Penetrated, 0.61111f}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        RayResultsList walked = c.walked;
        applyPenetration(walked, c.nominal, c.loss);
        int next = 0;
        for (const RayResult& result : walked) {
            EXPECT_EQ(result.hasPenetration, !result.exitHit);
            if (result.exitHit)
                continue;
            const Expected& e = c.expected[next++];
            EXPECT_NEAR(result.penetrationBefore, e.before, 1e-3);
            EXPECT_NEAR(result.penetrationAfter, e.after, 1e-3);
            EXPECT_EQ(result.verdict, e.verdict);
            EXPECT_NEAR(result.chance, e.chance, 1e-4);
        }
        EXPECT_EQ(next, int(c.expected.size()));
    }
}

TEST(PenetrationTest, TheReportGivesTheFirstRegularPlatesChance)
{
    RayResultsList walked = {plate(20, true, 0.5f), plate(100)};
    applyPenetration(walked, 180, 0.05f);
    const QString text = ArmorReport::plainText(walked);
    EXPECT_TRUE(text.contains("Penetration: 180mm -> 160mm\nPenetrated\nFree Travel: 50cm\n"))
        << text.toStdString();
    EXPECT_TRUE(
        text.endsWith("Penetration: 120mm -> 20mm\nPenetrated\nChance to penetrate: 72.2%\n"))
        << text.toStdString();
    // Without a penetration value the report reads as it always did.
    EXPECT_EQ(
        ArmorReport::plainText({plate(100)}),
        "Material: plate\nAngle: 0\u00b0 (0\u00b0 normalized)\nArmor: 0mm (100mm effective)\n");
}

} // namespace
