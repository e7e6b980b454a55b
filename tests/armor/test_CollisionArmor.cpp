#include "CollisionArmor.h"

#include <QStandardItemModel>

#include <gtest/gtest.h>

#include <tuple>

namespace {

Colour whole(const Colour& unit)
{
    return {std::round(unit[0] * 255), std::round(unit[1] * 255), std::round(unit[2] * 255),
            unit[3]};
}

// A hull of 20, 30, 40 regular and 30 spaced, a surveying device of 5 and
// tracks of two materials at 10 (one row, one colour).
class CollisionArmorTest : public testing::Test
{
protected:
    void SetUp() override
    {
        armor.addChassisArmor(10, "leftTrack", false);
        armor.addChassisArmor(10, "rightTrack", false);
        armor.addHullArmor(20, "armor_1", false);
        armor.addHullArmor(30, "armor_2", false);
        armor.addHullArmor(30, "armor_3", true);
        armor.addHullArmor(5, "surveyingDevice", false);
        armor.addTurretArmor(40, "turret_front", "Turret A", false);
        armor.addTurretArmor(45, "turret_front", "Turret B", false);
        armor.finish();
    }

    CollisionArmor armor;
};

TEST_F(CollisionArmorTest, RegularValuesShadeFromRedThroughYellowAndSpacedFromMagenta)
{
    EXPECT_EQ(armor.regularValues, (QVector<float>{10, 20, 30, 40, 45}));
    EXPECT_EQ(armor.spacedValues, (QVector<float>{30}));
    const std::tuple<float, bool, Colour> cases[] = {
        {10, false, {255, 0, 0, 1}},   {20, false, {255, 102, 0, 1}}, {30, false, {255, 204, 0, 1}},
        {40, false, {255, 255, 0, 1}}, {45, false, {153, 255, 0, 1}}, {30, true, {255, 0, 255, 1}},
        {12, false, {0, 0, 0, 1}}, // not in the table: black
    };
    for (const auto& [value, spaced, expected] : cases) {
        SCOPED_TRACE(value);
        EXPECT_EQ(whole(armor.colourFor(value, spaced, false)), expected);
    }
    // The surveying device is listed in the hull but shows its own colour.
    EXPECT_EQ(armor.hullArmorFor("surveyingDevice").value, 5);
    EXPECT_EQ(whole(armor.colourFor(5, false, true)), (Colour{128, 0, 128, 1}));

    ASSERT_EQ(armor.regularModel->rowCount(), 5);
    EXPECT_EQ(armor.regularModel->item(2)->text(), "30");
    EXPECT_EQ(armor.regularModel->item(2)->background().color(), QColor(255, 204, 0));
    EXPECT_EQ(armor.spacedModel->item(0)->background().color(), QColor(255, 0, 255));
}

TEST(CollisionArmorScale, ThreeRegularValuesStepBy170)
{
    CollisionArmor armor;
    for (float value : {30.f, 10.f, 20.f})
        armor.addHullArmor(value, QString::number(value), false);
    armor.finish();
    EXPECT_EQ(whole(armor.colourFor(10, false, false)), (Colour{255, 0, 0, 1}));
    EXPECT_EQ(whole(armor.colourFor(20, false, false)), (Colour{255, 170, 0, 1}));
    EXPECT_EQ(whole(armor.colourFor(30, false, false)), (Colour{255, 255, 0, 1}));
}

TEST_F(CollisionArmorTest, ASelectedRowGreysItsOwnKindOnly)
{
    EXPECT_TRUE(armor.toggleRegularSelection(20));
    const Colour grey{169, 169, 169, 1};
    EXPECT_EQ(whole(armor.colourFor(20, false, false)), (Colour{255, 102, 0, 1}));
    EXPECT_EQ(whole(armor.colourFor(30, false, false)), grey);
    EXPECT_EQ(whole(armor.colourFor(30, true, false)), (Colour{255, 0, 255, 1}));
    EXPECT_EQ(whole(armor.colourFor(5, false, true)), (Colour{128, 0, 128, 1}));
    // The same row again clears the pick.
    EXPECT_FALSE(armor.toggleRegularSelection(20));
    EXPECT_EQ(armor.selectedRegular, -1);
    EXPECT_EQ(whole(armor.colourFor(30, false, false)), (Colour{255, 204, 0, 1}));

    // A selected 0 divides by 1: 1e-8 away still counts as the same value,
    // 1e-6 away does not.
    armor.regularSelected = true;
    armor.selectedRegular = 0;
    EXPECT_EQ(whole(armor.colourFor(1e-8f, false, false)), (Colour{0, 0, 0, 1}));
    EXPECT_EQ(whole(armor.colourFor(1e-6f, false, false)), grey);
}

TEST_F(CollisionArmorTest, LookupsMatchNameAndOwnerAndFallBackToNothing)
{
    EXPECT_EQ(armor.turretArmorFor("turret_front", "Turret B").value, 45);
    EXPECT_EQ(armor.turretArmorFor("turret_front", "Turret C").value, 0);
    const ArmorValue missing = armor.hullArmorFor("nothing");
    EXPECT_EQ(std::make_tuple(missing.value, missing.name, missing.spaced),
              std::make_tuple(0.f, QString(), false));
    EXPECT_TRUE(armor.hullArmorFor("armor_3").spaced);
}

} // namespace

namespace {

// A plain-text vehicle file: hull, the first of two chassis, and the fitted
// turret's and gun's plates; thicknesses that are no number count as 0 mm.
TEST(CollisionArmorRead, TakesTheFittedPartsAndReadsOddThicknessesAsZero)
{
    ArmorSource source;
    ASSERT_TRUE(source.vehicle.setContent(QStringLiteral(R"(<root>
      <hull><armor><front>80</front><screen>6<vehicleDamageFactor>0</vehicleDamageFactor></screen>
        <roof>nan</roof><floor>inf</floor></armor></hull>
      <chassis><First><armor><leftTrack>20</leftTrack></armor></First>
        <Second><armor><leftTrack>99</leftTrack></armor></Second></chassis>
      <turrets0>
        <T1><userString>a:T1</userString><armor><mantlet>120</mantlet></armor>
          <guns><G1><armor><gun>30</gun></armor></G1><G2><armor><gun>55</gun></armor></G2></guns></T1>
        <T2><userString>a:T2</userString><armor><mantlet>150</mantlet></armor></T2>
      </turrets0></root>)")));
    source.turret = "a:T1";
    source.gun = "a:G2";
    CollisionArmor armor;
    armor.read(source);
    armor.finish();
    EXPECT_EQ(armor.regularValues, (QVector<float>{0, 20, 55, 80, 120}));
    EXPECT_EQ(armor.spacedValues, (QVector<float>{6}));
    EXPECT_EQ(armor.turretArmorFor("mantlet", "a:T1").value, 120);
    EXPECT_EQ(armor.gunArmorFor("gun", "a:G2").value, 55);
    EXPECT_EQ(armor.hullArmorFor("floor").value, 0);
    EXPECT_EQ(armor.gunArmor.size(), 1);
}

} // namespace
