#include "GunShells.h"
#include "LogCapture.h"
#include "VehicleFile.h"

#include <QDomDocument>

#include <gtest/gtest.h>

namespace {

QDomDocument document(const QString& text)
{
    QDomDocument doc;
    doc.setContent(text);
    return doc;
}

const QString shellFile = QStringLiteral(
    "<shells.xml>"
    "<_88mm_AP><userString>_88mm_AP</userString><kind>\tARMOR_PIERCING </kind>"
    "<caliber>\t88 </caliber></_88mm_AP>"
    "<_88mm_HEAT><kind>HOLLOW_CHARGE</kind><caliber>88</caliber>"
    "<piercingPowerLossFactorByDistance> 0.05\t</piercingPowerLossFactorByDistance></_88mm_HEAT>"
    "<_88mm_HE><kind>HIGH_EXPLOSIVE</kind><caliber>8x8</caliber></_88mm_HE>"
    "</shells.xml>");

QString shot(const QString& tag, const QString& power, const QString& maxDistance = "720")
{
    return QStringLiteral("<%1><defaultPortion>0.5</defaultPortion><speed>\t810 </speed>"
                          "<maxDistance>%3</maxDistance><piercingPower>%2</piercingPower></%1>")
        .arg(tag, power, maxDistance);
}

TEST(GunShellsTest, ShotsAndShellFileJoinByNameWithPaddedAndMalformedNumbers)
{
    LogCapture log;
    const QDomDocument shots =
        document("<shots>" + shot("_88mm_AP", "\t140 120 ") + shot("_88mm_HEAT", "180 180", "") +
                 shot("_88mm_HE", "44") + shot("_unknown", "1e 2") + "</shots>");
    QVector<Shell> shells = readShots(shots.documentElement(), "Gun");
    describeShells(shells, document(shellFile).documentElement());
    ASSERT_EQ(shells.size(), 4);

    struct Expected
    {
        const char* tag;
        const char* kind;
        float calibre, power100, power500, loss;
        int type;
    };
    const Expected expected[] = {
        {"_88mm_AP", "ARMOR_PIERCING", 88, 140, 120, 0, 0},
        {"_88mm_HEAT", "HOLLOW_CHARGE", 88, 180, 180, 0.05f, 3},
        // One number where two belong, and a calibre that is no number.
        {"_88mm_HE", "HIGH_EXPLOSIVE", 0, 0, 0, 0, 2},
        {"_unknown", "", 0, 0, 0, 0, 2},
    };
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(expected[i].tag);
        const Shell& shell = shells[i];
        EXPECT_EQ(shell.tag, expected[i].tag);
        EXPECT_EQ(shell.kind, expected[i].kind);
        EXPECT_FLOAT_EQ(shell.calibre, expected[i].calibre);
        EXPECT_FLOAT_EQ(shell.piercingPower100, expected[i].power100);
        EXPECT_FLOAT_EQ(shell.piercingPower500, expected[i].power500);
        EXPECT_FLOAT_EQ(shell.lossFactorByDistance, expected[i].loss);
        EXPECT_EQ(shell.shellType(), expected[i].type);
        EXPECT_FLOAT_EQ(shell.speed, 810);
    }
    // A missing maxDistance reads as 0 quietly; each malformed field logs once.
    EXPECT_FLOAT_EQ(shells[1].maxDistance, 0);
    EXPECT_EQ(
        log.lines,
        (QStringList{"[Warning] Malformed number in Gun/_88mm_HE/piercingPower, read as 0: 44",
                     "[Warning] Malformed number in Gun/_unknown/piercingPower, read as 0: 1e 2",
                     "[Warning] Malformed number in shells/_88mm_HE/caliber, read as 0: 8x8"}));
    EXPECT_EQ(shells[3].name, "_unknown"); // not in the shell file: its tag
}

TEST(GunShellsTest, PenetrationFollowsTheDistance)
{
    Shell shell;
    shell.piercingPower100 = 140;
    shell.piercingPower500 = 120;
    shell.maxDistance = 720;
    const std::pair<float, float> cases[] = {{0, 140},   {100, 140}, {300, 130}, {500, 120},
                                             {700, 110}, {720, 109}, {5000, 109}};
    for (const auto& [distance, expected] : cases)
        EXPECT_FLOAT_EQ(shell.penetrationAt(distance), expected) << distance;
    shell.maxDistance = 0; // none given: the line runs on, down to 0
    EXPECT_FLOAT_EQ(shell.penetrationAt(900), 100);
    EXPECT_FLOAT_EQ(shell.penetrationAt(100000), 0);
}

TEST(GunShellsTest, AVehiclesOwnShotsStandForTheGunFilesOnes)
{
    const QString gun =
        "<G1>shared<models/></G1><G2>shared<shots>%1</shots></G2><G3><models/></G3>";
    const QDomDocument vehicle =
        document("<v.xml><turrets0><T><userString>n:T</userString><guns>" +
                 gun.arg(shot("_88mm_HE", "44 44")) + "</guns></T></turrets0></v.xml>");
    const QDomDocument guns =
        document("<guns.xml><shared><G1><shots>" + shot("_88mm_AP", "140 120") +
                 shot("_88mm_HEAT", "180 180") + "</shots></G1><G2><shots>" +
                 shot("_88mm_AP", "140 120") + "</shots></G2></shared></guns.xml>");
    const VehicleFile file = readVehicleFile(vehicle, true, guns, document(shellFile));
    ASSERT_EQ(file.turrets.size(), 1);
    QStringList listed;
    for (const Gun& g : file.turrets[0].guns) {
        QStringList names;
        for (const Shell& shell : g.shells)
            names << shell.name + ":" + shell.kind;
        listed << names.join(',');
    }
    EXPECT_EQ(listed, (QStringList{"_88mm_AP:ARMOR_PIERCING,_88mm_HEAT:HOLLOW_CHARGE",
                                   "_88mm_HE:HIGH_EXPLOSIVE", ""}));
}

} // namespace
