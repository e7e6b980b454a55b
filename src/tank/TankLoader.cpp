#include "TankLoader.h"

#include "BinaryReader.h"
#include "Constants.h"
#include "Database.h"
#include "FileManager.h"
#include "GlFunctions.h"
#include "Log.h"
#include "Material.h"
#include "MaterialLoader.h"
#include "MessageBoxes.h"
#include "PackedXmlReader.h"
#include "Settings.h"
#include "StatusMessages.h"
#include "TankInfo.h"
#include "TankMesh.h"
#include "TextureLoader.h"
#include "TurretGunChooser.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QOpenGLFunctions_3_2_Core>

#include <memory>

namespace {

// T(p) x rotation x T(-p): the rotation about the point p.
Matrix aboutPivot(const Vector3& p, const Matrix& rotation)
{
    return matrixProduct(matrixProduct(translationMatrix(p), rotation),
                         translationMatrix({-p[0], -p[1], -p[2]}));
}

Vector3 sum(const Vector3& a, const Vector3& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

QDomDocument readDocument(QIODevice* device, const QString& name, bool* plainText)
{
    BinaryReader binary(device);
    PackedXmlReader reader(&binary);
    QDomDocument document = reader.read(name);
    if (plainText)
        *plainText = reader.plainText;
    return document;
}

} // namespace

TankLoader::TankLoader(QObject* parent)
    : QObject(parent), tankRotation(identityMatrix()), turretRotation(identityMatrix()),
      gunRotation(identityMatrix()), info(new TankInfo(this)), chooser(new TurretGunChooser(this))
{
    // Each part hangs on the part of the same state before it.
    for (int state = 0; state < MeshStates; ++state) {
        auto* chassisMesh = new TankMesh(nullptr, &chain);
        auto* hullMesh = new TankMesh(chassisMesh, &chain);
        auto* turretMesh = new TankMesh(hullMesh, &chain);
        auto* gunMesh = new TankMesh(turretMesh, &chain);
        chassis.append(chassisMesh);
        hull.append(hullMesh);
        turret.append(turretMesh);
        gun.append(gunMesh);
    }
    Log::log(QStringLiteral("Creating tank loader."), Log::Info);
}

TankLoader::~TankLoader()
{
    // Meshes free GL objects: the owner keeps the context current.
    for (QVector<Mesh*>* list : {&gun, &turret, &hull, &chassis})
        qDeleteAll(*list);
}

TankMesh* TankLoader::mesh(int part, int state) const
{
    if (state < 0 || state >= MeshStates)
        return nullptr;
    const QVector<Mesh*>* lists[] = {&chassis, &hull, &turret, &gun};
    if (part < 0 || part >= PartCount)
        return nullptr;
    return static_cast<TankMesh*>(lists[part]->value(state));
}

Mesh* TankLoader::partMesh(int part, int state) const
{
    const QVector<Mesh*>* lists[] = {&chassis, &hull, &turret, &gun};
    if (part < 0 || part >= PartCount)
        return nullptr;
    return lists[part]->value(state);
}

void TankLoader::setCollisionState(std::unique_ptr<CollisionState> state)
{
    if (collision || !state)
        return;
    collision = std::move(state);
    QVector<Mesh*>* lists[] = {&chassis, &hull, &turret, &gun};
    for (int part = 0; part < PartCount; ++part)
        lists[part]->append(collision->createMesh(part));
}

QString TankLoader::sourceName(Source source)
{
    switch (source) {
    case Source::ModFolder:
        return QStringLiteral("mod");
    case Source::LooseFile:
        return QStringLiteral("loose");
    case Source::Archive:
        return QStringLiteral("archive");
    case Source::None:
        break;
    }
    return QString();
}

void TankLoader::unloadMeshes()
{
    for (int part = 0; part < PartCount; ++part)
        for (int state = 0; state < chassis.size(); ++state)
            partMesh(part, state)->unload();
}

void TankLoader::unload()
{
    unloadMeshes();
    tier.clear();
    name.clear();
    category.clear();
    nation.clear();
    chassisHealth = hullHealth = turretHealth = 0;
    sharedGun = false;
    if (TextureLoader* textures = TextureLoader::instance())
        textures->clearTankTextures();
    window.renewOverlayText();
}

void TankLoader::abandonLoad()
{
    chooser->clear();
    unload();
    loaded = false;
    // The load's "Loading Tank:" would otherwise stand on as if it went on.
    showStatusMessage(QString(), 0);
}

bool TankLoader::failLoad(const QString& tankName, const QString& reason)
{
    const QString text = tr("Failed to parse xml file for tank: ") + tankName;
    Log::log(text + (reason.isEmpty() ? QString() : QStringLiteral(" (") + reason + ')'),
             Log::Error);
    warningBox(nullptr, QLatin1String(Ferrox::ApplicationName), text, QMessageBox::Ok,
               QMessageBox::Ok);
    return false;
}

bool TankLoader::readVehicle(const QString& tankName)
{
    Database* database = Database::instance();
    FileManager* files = FileManager::instance();
    vehicleFilePath = database ? database->xmlFile(tankName) : QString();
    vehicleSource = Source::None;
    if (!files)
        return failLoad(tankName, QStringLiteral("no file manager"));

    // A vehicle file in the mod folder overrides the game's, though the
    // table was built from the game's list.
    std::unique_ptr<QIODevice> device(
        FileManager::openPlainFile(currentModPath() + QLatin1Char('/') + vehicleFilePath));
    if (device) {
        vehicleSource = Source::ModFolder;
    } else {
        device.reset(files->getFile(vehicleFilePath));
        vehicleSource =
            QFile::exists(QDir::toNativeSeparators(
                currentGamePath() + QLatin1String(Ferrox::ResourceFolder) + vehicleFilePath))
                ? Source::LooseFile
                : Source::Archive;
    }
    if (!device || (!device->isOpen() && !device->open(QIODevice::ReadOnly))) {
        vehicleSource = Source::None;
        return failLoad(tankName, QString());
    }
    bool plainText = false;
    vehicleDocument = readDocument(device.get(), vehicleFilePath, &plainText);
    if (vehicleDocument.documentElement().isNull())
        return failLoad(tankName, QStringLiteral("no document in ") + vehicleFilePath);

    const QString gunFile = gunFilePath(vehicleFilePath);
    std::unique_ptr<QIODevice> gunDevice(files->getFile(gunFile));
    if (!gunDevice)
        return failLoad(tankName, QStringLiteral("no gun file ") + gunFile);
    gunDocument = readDocument(gunDevice.get(), QStringLiteral("shared"), nullptr);
    // Without a shell file the guns' shells are listed by their tags alone.
    QDomDocument shellDocument;
    std::unique_ptr<QIODevice> shellDevice(files->getFile(shellFilePath(vehicleFilePath)));
    if (shellDevice && (shellDevice->isOpen() || shellDevice->open(QIODevice::ReadOnly)))
        shellDocument = readDocument(shellDevice.get(), QStringLiteral("shells"), nullptr);

    vehicle = readVehicleFile(vehicleDocument, plainText, gunDocument, shellDocument);
    startIndex = vehicle.startIndex;
    sharedGun = vehicle.lastGunShared;
    const QString problem = vehicle.assemblyProblem();
    if (!problem.isEmpty())
        return failLoad(tankName, problem);
    return true;
}

bool TankLoader::load(QString tankName)
{
    const Settings* settings = Settings::instance();
    if (!settings || !settings->gavrelPathValid)
        return false;
    if (collision)
        collision->clearWorld();
    QElapsedTimer timer;
    timer.start();
    sharedGun = false;
    if (loaded) {
        unload();
        info->clear();
    }
    // Whatever stood is gone: nothing is drawn until this load succeeds.
    loaded = false;
    chain.reset();

    showStatusMessage(tr("Loading ") + tr(" Tank: ") + tankName, 0);
    Log::log(QStringLiteral("Loading Tank: ") + tankName, Log::Info);

    Database* database = Database::instance();
    if (!database || database->tankDirectory(tankName).isEmpty()) {
        abandonLoad();
        return false;
    }
    if (!readVehicle(tankName)) {
        abandonLoad();
        return false;
    }
    chassisHealth = vehicle.chassis.maxHealth;
    hullHealth = vehicle.hull.maxHealth;
    const Turret& firstTurret = vehicle.turrets.first();
    turretHealth = firstTurret.maxHealth;

    chooser->setTurrets(vehicle.turrets);
    chooser->currentTurretName = firstTurret.name;
    chooser->currentGunName = firstTurret.guns.first().name;

    for (int state = 0; state < MeshStates; ++state) {
        if (!loadState(state)) {
            abandonLoad();
            return false;
        }
    }
    if (!loadCollisionState()) {
        abandonLoad();
        return false;
    }

    name = tankName;
    category = database->translatedCategory(tankName);
    tier = database->tier(tankName);
    nation = database->translatedNation(tankName);
    info->parse(vehicleDocument, startIndex);
    loadExclusionMasks();
    // The camouflage loader reads the vehicle's patterns on tankLoaded().
    showVisualText();
    readArmor();

    const float seconds = float((timer.elapsed() + 500) * 0.001);
    const QString time = QString::number(seconds, 'g', 6);
    Log::log(name + QStringLiteral(" loaded in: ") + time + QStringLiteral(" seconds"), Log::Info);
    showStatusMessage(name + tr(" loaded in: ") + time + tr(" seconds"), 0);

    window.addRecentName(name);
    loaded = true;
    applyLimits();
    emit tankLoaded();
    return true;
}

bool TankLoader::loadState(int state)
{
    const bool destroyed = state == Destroyed;
    auto pick = [destroyed](const auto& record) {
        return destroyed ? record.destroyedModel : record.undamagedModel;
    };
    loadedState = state;
    if (!mesh(ChassisPart, state)->load(pick(vehicle.chassis), {0, 0, 0}, TankMesh::Chassis, true))
        return false;
    if (!mesh(HullPart, state)
             ->load(pick(vehicle.hull), vehicle.hullPosition, TankMesh::Hull, true))
        return false;
    const Turret* turretRecord = chooser->currentTurret();
    const Gun* gunRecord = turretRecord ? turretRecord->gun(chooser->currentGunName) : nullptr;
    if (turretRecord && gunRecord && !loadTurretAndGun(state, *turretRecord, *gunRecord))
        logMissingTurretOrGun(state);
    return turretRecord && gunRecord;
}

// The gun sits on the turret's joint: without the turret it is not loaded.
// A part that fails is emptied again, so that nothing half-built is drawn.
bool TankLoader::loadTurretAndGun(int state, const Turret& turretRecord, const Gun& gunRecord)
{
    const bool destroyed = state == Destroyed;
    loadedState = state;
    if (!mesh(TurretPart, state)
             ->load(destroyed ? turretRecord.destroyedModel : turretRecord.undamagedModel,
                    turretRecord.position, TankMesh::Turret, true)) {
        partMesh(TurretPart, state)->unload();
        return false;
    }
    if (!mesh(GunPart, state)
             ->load(destroyed ? gunRecord.destroyedModel : gunRecord.undamagedModel,
                    turretRecord.gunPosition, TankMesh::Gun, true)) {
        partMesh(GunPart, state)->unload();
        return false;
    }
    return true;
}

bool TankLoader::loadCollisionState()
{
    if (!collision)
        return true;
    const Turret* turretRecord = chooser->currentTurret();
    loadedState = Collision;
    if (!collision->load(ChassisPart, vehicle.chassis.collisionModel, {0, 0, 0}) ||
        !collision->load(HullPart, vehicle.hull.collisionModel, vehicle.hullPosition) ||
        !turretRecord)
        return false;
    if (!loadCollisionTurretAndGun(*turretRecord))
        logMissingTurretOrGun(Collision);
    return true;
}

bool TankLoader::loadCollisionTurretAndGun(const Turret& turretRecord)
{
    const Gun* gunRecord = turretRecord.gun(chooser->currentGunName);
    loadedState = Collision;
    if (!gunRecord)
        return false;
    if (!collision->load(TurretPart, turretRecord.collisionModel, turretRecord.position)) {
        partMesh(TurretPart, Collision)->unload();
        return false;
    }
    if (!collision->load(GunPart, gunRecord->collisionModel, turretRecord.gunPosition)) {
        partMesh(GunPart, Collision)->unload();
        return false;
    }
    return true;
}

void TankLoader::logMissingTurretOrGun(int state)
{
    Log::log(QStringLiteral("The turret or gun of state %1 did not load: the vehicle is shown "
                            "without it")
                 .arg(state),
             Log::Warning);
}

void TankLoader::readArmor()
{
    if (collision)
        collision->readArmor();
}

void TankLoader::loadExclusionMasks()
{
    QStringList masks{vehicle.vehicleMask, vehicle.chassisMask, vehicle.hullMask};
    for (const Turret& record : std::as_const(vehicle.turrets)) {
        masks.append(record.exclusionMask);
        for (const Gun& gunRecord : record.guns)
            masks.append(gunRecord.exclusionMask);
    }
    TextureLoader* textures = TextureLoader::instance();
    for (const QString& mask : std::as_const(masks)) {
        if (mask.isEmpty())
            continue;
        if (textures)
            textures->loadTexture(mask);
        info->addTexture(TankInfo::Exclusion, mask);
    }
}

void TankLoader::applyLimits()
{
    const Turret* turretRecord = chooser->currentTurret();
    const Gun* gunRecord = chooser->currentGun();
    if (!turretRecord || !gunRecord)
        return;
    // A gun's own yaw limits stand for the turret's.
    const bool gunYaw = gunRecord->yawMin != 0 || gunRecord->yawMax != 0;
    const float first = gunYaw ? gunRecord->yawMin : turretRecord->yawMin;
    const float second = gunYaw ? gunRecord->yawMax : turretRecord->yawMax;
    window.setTurretRange(-second, -first);
    window.setGunRange(gunRecord->pitchMin, gunRecord->pitchMax);
}

void TankLoader::changeTurret(const QString& turretName)
{
    const Turret* record = chooser->turret(turretName);
    if (!record || record->guns.isEmpty())
        return;
    loadTurretGun(turretName, record->guns.first().name);
}

void TankLoader::loadTurretGun(const QString& turretName, const QString& gunName)
{
    chooser->currentTurretName = turretName;
    chooser->currentGunName = gunName;
    const Turret* found = chooser->turret(turretName);
    const Gun* gunRecord = found ? found->gun(gunName) : nullptr;
    if (!found || !gunRecord) {
        Log::log(QStringLiteral("No turret ") + turretName + QStringLiteral(" with gun ") + gunName,
                 Log::Warning);
        return;
    }
    if (collision)
        collision->removeFromWorld();
    // Copies: a failure empties the chooser's list.
    const Turret turretRecord = *found;
    const Gun gunCopy = *gunRecord;
    turretHealth = turretRecord.maxHealth;
    if (TextureLoader* textures = TextureLoader::instance())
        if (!turretRecord.exclusionMask.isEmpty())
            textures->loadTexture(turretRecord.exclusionMask);

    for (int state = 0; state < turret.size(); ++state) {
        partMesh(TurretPart, state)->unload();
        partMesh(GunPart, state)->unload();
    }
    // A turret or gun that fails costs itself: chassis and hull stay.
    for (int state = 0; state < MeshStates; ++state)
        if (!loadTurretAndGun(state, turretRecord, gunCopy))
            logMissingTurretOrGun(state);
    if (collision && !loadCollisionTurretAndGun(turretRecord))
        logMissingTurretOrGun(Collision);
    readArmor();
    const Mesh* turretMesh = partMesh(TurretPart, damageMode);
    const Mesh* gunMesh = partMesh(GunPart, damageMode);
    window.setVisualText(TurretPart, turretMesh ? turretMesh->visual->xmlText : QString());
    window.setVisualText(GunPart, gunMesh ? gunMesh->visual->xmlText : QString());
    applyLimits();
    window.renewOverlayText();
}

bool TankLoader::reload()
{
    if (!loaded)
        return false;
    const QString gunName = chooser->currentGunName;
    const QString turretName = chooser->currentTurretName;
    const QString tankName = name;
    unload();
    loaded = false;
    if (load(tankName)) {
        loadTurretGun(turretName, gunName);
        return true;
    }
    Log::log(QStringLiteral("Failed to load: ") + tankName, Log::Warning);
    showStatusMessage(QString(), 0);
    window.renewOverlayText();
    return false;
}

void TankLoader::showVisualText()
{
    for (int part = 0; part < PartCount; ++part) {
        const Mesh* shown = partMesh(part, damageMode);
        window.setVisualText(part, shown ? shown->visual->xmlText : QString());
    }
}

void TankLoader::damageModeChanged(TankModel model)
{
    damageMode = model;
    showVisualText();
}

void TankLoader::armorToggle(bool val)
{
    armourMode = val;
}

int TankLoader::triangleCount() const
{
    const bool hidden[PartCount] = {hideChassis, hideHull, hideTurret, hideGun};
    int count = 0;
    for (int part = 0; part < PartCount; ++part) {
        const Mesh* shown = partMesh(part, damageMode);
        if (shown && !hidden[part])
            count += shown->visual->triangleCount();
    }
    return count;
}

void TankLoader::setTankRotation(float angle)
{
    tankRotation = rotate(identityMatrix(), angle, {0, 1, 0});
}

void TankLoader::setTurretRotation(float angle)
{
    turretRotation = rotate(identityMatrix(), angle, {0, 1, 0});
}

void TankLoader::setGunRotation(float angle)
{
    gunRotation = rotate(identityMatrix(), -angle, {1, 0, 0});
}

bool TankLoader::exportAll()
{
    if (!loaded)
        return false;
    const QVector<Mesh*>* lists[] = {&chassis, &hull, &turret, &gun};
    QVector<Mesh*> parts;
    for (const QVector<Mesh*>* list : lists) {
        Mesh* part = list->value(damageMode);
        if (!part)
            return false;
        parts.append(part);
    }
    // The rotations are not on the chain: the parts come out assembled.
    chain.reset();
    bool written = true;
    for (Mesh* part : parts)
        written = part->exportObj() && written;
    return written;
}

void TankLoader::resetChain()
{
    chain.reset();
    chain.multiply(tankRotation);
}

void TankLoader::drawParts(int state, int pass, Material* material, ShaderProgram* shader,
                           bool allHidden)
{
    Mesh* turretMesh = partMesh(TurretPart, state);
    Mesh* gunMesh = partMesh(GunPart, state);
    partMesh(ChassisPart, state)->draw(allHidden || hideChassis, pass, material, shader);
    partMesh(HullPart, state)->draw(allHidden || hideHull, pass, material, shader);
    chain.multiply(aboutPivot(turretPivot(state), turretRotation));
    turretMesh->draw(allHidden || hideTurret, pass, material, shader);
    chain.multiply(aboutPivot(gunPivot(state), gunRotation));
    gunMesh->draw(allHidden || hideGun, pass, material, shader);
}

Vector3 TankLoader::turretPivot(int state) const
{
    const Mesh* hullMesh = partMesh(HullPart, state);
    const Mesh* turretMesh = partMesh(TurretPart, state);
    return hullMesh && turretMesh ? sum(hullMesh->offset, turretMesh->offset) : Vector3{0, 0, 0};
}

Vector3 TankLoader::gunPivot(int state) const
{
    const Mesh* gunMesh = partMesh(GunPart, state);
    return gunMesh ? gunMesh->offset : Vector3{0, 0, 0};
}

void TankLoader::placeParts(int state)
{
    if (!partMesh(ChassisPart, state))
        return;
    resetChain();
    // Hidden meshes only move the chain (and collision meshes their ray
    // objects); the colour pass is the one that places them.
    drawParts(state, 1, nullptr, nullptr, true);
}

void TankLoader::placeCollisionModels()
{
    placeParts(Collision);
}

void TankLoader::render(int pass)
{
    if (!loaded || (pass == 0 && wireframe))
        return;
    const int state = armourMode ? armourModel : damageMode;
    if (!partMesh(ChassisPart, state))
        return;
    // With the intact model on screen the rays still meet the collision
    // model where the vehicle stands.
    if (armourMode && state != Collision)
        placeCollisionModels();
    resetChain();

    MaterialLoader* materials = MaterialLoader::instance();
    Material* material = nullptr;
    ShaderProgram* shader = nullptr;
    if (gridTexture && state == Intact && materials)
        material = materials->defaultMaterials.value(materials->lightingMode);
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    auto wireMaterial = [&] {
        material = materials ? materials->wireframeMaterial : nullptr;
        shader = material ? material->shader : nullptr;
        if (gl)
            gl->glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    };
    if (solidWire) {
        drawParts(state, pass, material, shader);
        wireMaterial();
        resetChain();
    }
    if (wireframe)
        wireMaterial();
    if (pass == 0 && materials)
        material = materials->depthMaterial;
    drawParts(state, pass, material, shader);
    if ((wireframe || solidWire) && gl)
        gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}
