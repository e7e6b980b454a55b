#include "ArmorReport.h"

#include <gtest/gtest.h>

namespace {

const QString open = "<p style=\"color: black;background-color: ";

RayResult plate(const QString& name, int category, float armor, float effective,
                float freeTravel = 0, bool ricochet = false)
{
    RayResult result;
    result.name = name;
    result.category = category;
    result.armor = armor;
    result.effective = effective;
    result.angle = 45;
    result.normalizedAngle = 43;
    result.freeTravel = freeTravel;
    result.ricochet = ricochet;
    return result;
}

QString block(const QString& colour, const RayResult& r, const QString& angles,
              const QString& thickness)
{
    return open + colour + "Material: " + r.name + "</p>" + open + colour + "Angle: " + angles +
           "</p>" + open + colour + "Armor: " + thickness + "</p>";
}

TEST(ArmorReportTest, PrintsEachPlateWithRicochetAndFreeTravelInOrder)
{
    const QString deg(QChar(0x00B0));
    const RayResult first = plate("armor_1", RegularArmor, 100, 136.73f, 0.125f, true);
    const RayResult last = plate("leftTrack", TrackArmor, 20, 20);
    const QString angles = "45" + deg + " (43" + deg + " normalized)";
    EXPECT_EQ(ArmorReport::html({first, last}),
              block("#FF6666;\">", first, angles, "100mm (136.73mm effective)") + open +
                  "#008080;\">Ricochet</p>" + open + "white;\">Free Travel: 12.5cm</p>" +
                  block("#66FF99;\">", last, angles, "20mm (20mm effective)"));

    RayResult spaced = plate("armor_3", SpacedArmor, 8, 8);
    EXPECT_EQ(ArmorReport::html({spaced}),
              block("#FF99FF\">", spaced, angles, "8mm (8mm effective)"));
}

TEST(ArmorReportTest, AMissIsOneBlockAndNothingIsEmpty)
{
    RayResult missed;
    missed.name = "Missed";
    missed.category = SpacedArmor;
    const QString html = ArmorReport::html({missed});
    EXPECT_TRUE(html.startsWith(open + "#FF99FF\">Material: Missed</p>"));
    EXPECT_FALSE(html.contains("Free Travel"));
    EXPECT_TRUE(ArmorReport::html({}).isEmpty());
}

} // namespace
