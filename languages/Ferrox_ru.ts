<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU">
    <context>
        <name>ArmorWidget</name>
        <message>
            <source>Material: </source>
            <translation>Материал: </translation>
        </message>
        <message>
            <source>Angle: </source>
            <translation>Угол: </translation>
        </message>
        <message>
            <source>normalized</source>
            <translation>с нормализацией</translation>
        </message>
        <message>
            <source>Armor: </source>
            <translation>Броня: </translation>
        </message>
        <message>
            <source>mm</source>
            <translation>мм</translation>
        </message>
        <message>
            <source>mm </source>
            <translation>мм </translation>
        </message>
        <message>
            <source>effective</source>
            <translation>приведённая</translation>
        </message>
        <message>
            <source>Ricochet</source>
            <translation>Рикошет</translation>
        </message>
        <message>
            <source>Free Travel: </source>
            <translation>Свободный пролёт: </translation>
        </message>
        <message>
            <source>cm</source>
            <translation>см</translation>
        </message>
        <message>
            <source>Penetration: </source>
            <translation>Пробитие: </translation>
        </message>
        <message>
            <source>Penetrated</source>
            <translation>Пробито</translation>
        </message>
        <message>
            <source>Not penetrated</source>
            <translation>Не пробито</translation>
        </message>
        <message>
            <source>Chance to penetrate: </source>
            <translation>Вероятность пробития: </translation>
        </message>
    </context>
    <context>
        <name>CommonMessages</name>
        <message>
            <source>You must select a tank.</source>
            <translation>Необходимо выбрать танк.</translation>
        </message>
        <message>
            <source>You must select a mod folder in the application preferences.</source>
            <translation>Необходимо выбрать папку модов в настройках программы.</translation>
        </message>
        <message>
            <source>Failed to create directory</source>
            <translation>Не удалось создать папку</translation>
        </message>
        <message>
            <source>Directory already exists.</source>
            <translation>Папка уже существует.</translation>
        </message>
        <message>
            <source>Failed to extract textures</source>
            <translation>Не удалось извлечь текстуры</translation>
        </message>
        <message>
            <source>Open Directory</source>
            <translation>Открыть папку</translation>
        </message>
        <message>
            <source>Select a file</source>
            <translation>Выберите файл</translation>
        </message>
        <message>
            <source>Update</source>
            <translation>Обновление</translation>
        </message>
    </context>
    <context>
        <name>Database</name>
        <message>
            <source>Could not build the database.
Please check that your Gavrel path is correct.</source>
            <translation>Не удалось построить базу данных.
Проверьте, правильно ли указан путь к Gavrel.</translation>
        </message>
        <message>
            <source>Rebuilding database.</source>
            <translation>Перестроение базы данных.</translation>
        </message>
        <message>
            <source>Database rebuilt.</source>
            <translation>База данных перестроена.</translation>
        </message>
    </context>
    <context>
        <name>Environment</name>
        <message>
            <source>Gavrel not found</source>
            <translation>Gavrel не найден</translation>
        </message>
    </context>
    <context>
        <name>MainWindow</name>
        <message>
            <source>Weak spots</source>
            <translation>Уязвимые места</translation>
        </message>
        <message>
            <source>Shell:</source>
            <translation>Снаряд:</translation>
        </message>
        <message>
            <source>Penetration (mm):</source>
            <translation>Пробитие (мм):</translation>
        </message>
        <message>
            <source>None</source>
            <translation>Нет</translation>
        </message>
        <message>
            <source>Distance (m):</source>
            <translation>Дистанция (м):</translation>
        </message>
        <message>
            <source>Export glTF...</source>
            <translation>Экспорт glTF...</translation>
        </message>
        <message>
            <source>Export the vehicle as shown as a glTF 2.0 file</source>
            <translation>Экспорт машины в показанном виде в файл glTF 2.0</translation>
        </message>
        <message>
            <source>Load a vehicle first.</source>
            <translation>Сначала загрузите машину.</translation>
        </message>
        <message>
            <source>Export glTF</source>
            <translation>Экспорт glTF</translation>
        </message>
        <message>
            <source>glTF binary (*.glb);;glTF with its textures beside it (*.gltf)</source>
            <translation>Двоичный glTF (*.glb);;glTF с текстурами рядом (*.gltf)</translation>
        </message>
        <message>
            <source>Ferrox never writes into the game folder.</source>
            <translation>Ferrox никогда не записывает в папку игры.</translation>
        </message>
        <message>
            <source>The glTF file could not be written.</source>
            <translation>Не удалось записать файл glTF.</translation>
        </message>
        <message>
            <source>glTF written: </source>
            <translation>glTF записан: </translation>
        </message>
        <message>
            <source>&amp;File</source>
            <translation>&amp;Файл</translation>
        </message>
        <message>
            <source>Recent Tanks</source>
            <translation>Недавние танки</translation>
        </message>
        <message>
            <source>&amp;Edit</source>
            <translation>&amp;Правка</translation>
        </message>
        <message>
            <source>&amp;View</source>
            <translation>&amp;Вид</translation>
        </message>
        <message>
            <source>&amp;Window</source>
            <translation>&amp;Окно</translation>
        </message>
        <message>
            <source>&amp;Settings</source>
            <translation>&amp;Настройки</translation>
        </message>
        <message>
            <source>&amp;Help</source>
            <translation>&amp;Справка</translation>
        </message>
        <message>
            <source>Main Toolbar</source>
            <translation>Основная панель</translation>
        </message>
        <message>
            <source>Window Toolbar</source>
            <translation>Панель окон</translation>
        </message>
        <message>
            <source>Tanks</source>
            <translation>Танки</translation>
        </message>
        <message>
            <source>Nations:</source>
            <translation>Нации:</translation>
        </message>
        <message>
            <source>Category:</source>
            <translation>Класс:</translation>
        </message>
        <message>
            <source>Tier:</source>
            <translation>Уровень:</translation>
        </message>
        <message>
            <source>Filter:</source>
            <translation>Фильтр:</translation>
        </message>
        <message>
            <source>Load</source>
            <translation>Загрузить</translation>
        </message>
        <message>
            <source>Open Tank Directory</source>
            <translation>Открыть папку танка</translation>
        </message>
        <message>
            <source>Create Tank Directory</source>
            <translation>Создать папку танка</translation>
        </message>
        <message>
            <source>Extract Textures</source>
            <translation>Извлечь текстуры</translation>
        </message>
        <message>
            <source>Edit Diffuse Texture</source>
            <translation>Редактировать диффузную текстуру</translation>
        </message>
        <message>
            <source>Generate UV Map</source>
            <translation>Создать UV-развёртку</translation>
        </message>
        <message>
            <source>Export Tank Mesh</source>
            <translation>Экспорт модели танка</translation>
        </message>
        <message>
            <source>Tank Options</source>
            <translation>Параметры танка</translation>
        </message>
        <message>
            <source>Turret:</source>
            <translation>Башня:</translation>
        </message>
        <message>
            <source>Gun:</source>
            <translation>Орудие:</translation>
        </message>
        <message>
            <source>Hide Geometry</source>
            <translation>Скрыть геометрию</translation>
        </message>
        <message>
            <source>Chassis</source>
            <translation>Ходовая</translation>
        </message>
        <message>
            <source>Hull</source>
            <translation>Корпус</translation>
        </message>
        <message>
            <source>Turret</source>
            <translation>Башня</translation>
        </message>
        <message>
            <source>Gun</source>
            <translation>Орудие</translation>
        </message>
        <message>
            <source>Tank Mesh</source>
            <translation>Модель танка</translation>
        </message>
        <message>
            <source>Undamaged</source>
            <translation>Целый</translation>
        </message>
        <message>
            <source>Destroyed</source>
            <translation>Уничтоженный</translation>
        </message>
        <message>
            <source>Collision</source>
            <translation>Коллизия</translation>
        </message>
        <message>
            <source>Texture Location</source>
            <translation>Источник текстур</translation>
        </message>
        <message>
            <source>Mod folder</source>
            <translation>Папка модов</translation>
        </message>
        <message>
            <source>Pak File</source>
            <translation>Архив игры</translation>
        </message>
        <message>
            <source>Texture Type</source>
            <translation>Тип текстур</translation>
        </message>
        <message>
            <source>Default</source>
            <translation>Обычные</translation>
        </message>
        <message>
            <source>Grid</source>
            <translation>Сетка</translation>
        </message>
        <message>
            <source>Rotate</source>
            <translation>Поворот</translation>
        </message>
        <message>
            <source>Tank:</source>
            <translation>Танк:</translation>
        </message>
        <message>
            <source>Reset</source>
            <translation>Сброс</translation>
        </message>
        <message>
            <source>Camo</source>
            <translation>Камуфляж</translation>
        </message>
        <message>
            <source>Camo Tone</source>
            <translation>Тон камуфляжа</translation>
        </message>
        <message>
            <source>Summer</source>
            <translation>Летний</translation>
        </message>
        <message>
            <source>Desert</source>
            <translation>Пустынный</translation>
        </message>
        <message>
            <source>Winter</source>
            <translation>Зимний</translation>
        </message>
        <message>
            <source>Export Camo Pattern</source>
            <translation>Экспорт узора камуфляжа</translation>
        </message>
        <message>
            <source>Camo Overlay</source>
            <translation>Наложение камуфляжа</translation>
        </message>
        <message>
            <source>Enable</source>
            <translation>Включить</translation>
        </message>
        <message>
            <source>Disable</source>
            <translation>Выключить</translation>
        </message>
        <message>
            <source>Colors</source>
            <translation>Цвета</translation>
        </message>
        <message>
            <source>Channel 1:</source>
            <translation>Канал 1:</translation>
        </message>
        <message>
            <source>...</source>
            <translation>...</translation>
        </message>
        <message>
            <source>Channel 2:</source>
            <translation>Канал 2:</translation>
        </message>
        <message>
            <source>Channel 3:</source>
            <translation>Канал 3:</translation>
        </message>
        <message>
            <source>Channel 4:</source>
            <translation>Канал 4:</translation>
        </message>
        <message>
            <source>Bake and Export</source>
            <translation>Запечь и экспортировать</translation>
        </message>
        <message>
            <source>Scene Settings</source>
            <translation>Настройки сцены</translation>
        </message>
        <message>
            <source>Viewport Settings</source>
            <translation>Настройки вьюпорта</translation>
        </message>
        <message>
            <source>Viewport color:</source>
            <translation>Цвет фона:</translation>
        </message>
        <message>
            <source>Ambient Light:</source>
            <translation>Рассеянный свет:</translation>
        </message>
        <message>
            <source>Scene Set</source>
            <translation>Сцена</translation>
        </message>
        <message>
            <source>Basic Garage</source>
            <translation>Обычный ангар</translation>
        </message>
        <message>
            <source>Premium Garage</source>
            <translation>Премиум-ангар</translation>
        </message>
        <message>
            <source>Hide Elements</source>
            <translation>Скрыть элементы</translation>
        </message>
        <message>
            <source>Hangar</source>
            <translation>Ангар</translation>
        </message>
        <message>
            <source>Tank Info</source>
            <translation>Сведения о танке</translation>
        </message>
        <message>
            <source>Render Stats</source>
            <translation>Статистика отрисовки</translation>
        </message>
        <message>
            <source>Lighting</source>
            <translation>Освещение</translation>
        </message>
        <message>
            <source>Enabled with shadows</source>
            <translation>Включено, с тенями</translation>
        </message>
        <message>
            <source>Enabled</source>
            <translation>Включено</translation>
        </message>
        <message>
            <source>Disabled</source>
            <translation>Выключено</translation>
        </message>
        <message>
            <source>Save Settings</source>
            <translation>Сохранить настройки</translation>
        </message>
        <message>
            <source>Camera</source>
            <translation>Камера</translation>
        </message>
        <message>
            <source>Camera Options</source>
            <translation>Параметры камеры</translation>
        </message>
        <message>
            <source>Type:</source>
            <translation>Тип:</translation>
        </message>
        <message>
            <source>Perspective</source>
            <translation>Перспектива</translation>
        </message>
        <message>
            <source>Orthographic</source>
            <translation>Ортогональная</translation>
        </message>
        <message>
            <source>View:</source>
            <translation>Вид:</translation>
        </message>
        <message>
            <source>Top</source>
            <translation>Сверху</translation>
        </message>
        <message>
            <source>Bottom</source>
            <translation>Снизу</translation>
        </message>
        <message>
            <source>Left</source>
            <translation>Слева</translation>
        </message>
        <message>
            <source>Right</source>
            <translation>Справа</translation>
        </message>
        <message>
            <source>Front</source>
            <translation>Спереди</translation>
        </message>
        <message>
            <source>Back</source>
            <translation>Сзади</translation>
        </message>
        <message>
            <source>Camera Control</source>
            <translation>Управление камерой</translation>
        </message>
        <message>
            <source>Target:</source>
            <translation>Цель:</translation>
        </message>
        <message>
            <source>X</source>
            <translation>X</translation>
        </message>
        <message>
            <source>Y</source>
            <translation>Y</translation>
        </message>
        <message>
            <source>Z</source>
            <translation>Z</translation>
        </message>
        <message>
            <source>Rotation:</source>
            <translation>Вращение:</translation>
        </message>
        <message>
            <source>Auto Rotation</source>
            <translation>Автовращение</translation>
        </message>
        <message>
            <source>FOV:</source>
            <translation>Угол обзора:</translation>
        </message>
        <message>
            <source>Zoom</source>
            <translation>Масштаб</translation>
        </message>
        <message>
            <source>Zoom Level:</source>
            <translation>Уровень масштаба:</translation>
        </message>
        <message>
            <source>Save View</source>
            <translation>Сохранить вид</translation>
        </message>
        <message>
            <source>Load View</source>
            <translation>Загрузить вид</translation>
        </message>
        <message>
            <source>Reset View</source>
            <translation>Сбросить вид</translation>
        </message>
        <message>
            <source>Armor Inspector</source>
            <translation>Инспектор брони</translation>
        </message>
        <message>
            <source>Enable </source>
            <translation>Включить </translation>
        </message>
        <message>
            <source>Shell Options</source>
            <translation>Параметры снаряда</translation>
        </message>
        <message>
            <source>AP</source>
            <translation>ББ</translation>
        </message>
        <message>
            <source>APCR</source>
            <translation>БП</translation>
        </message>
        <message>
            <source>HE</source>
            <translation>ОФ</translation>
        </message>
        <message>
            <source>HEAT</source>
            <translation>КС</translation>
        </message>
        <message>
            <source>Calibre:</source>
            <translation>Калибр:</translation>
        </message>
        <message>
            <source>Normalization:</source>
            <translation>Нормализация:</translation>
        </message>
        <message>
            <source>Tank View</source>
            <translation>Вид танка</translation>
        </message>
        <message>
            <source>Textured</source>
            <translation>С текстурами</translation>
        </message>
        <message>
            <source>Results:</source>
            <translation>Результаты:</translation>
        </message>
        <message>
            <source>Log</source>
            <translation>Журнал</translation>
        </message>
        <message>
            <source>All</source>
            <translation>Все</translation>
        </message>
        <message>
            <source>Warnings</source>
            <translation>Предупреждения</translation>
        </message>
        <message>
            <source>Errors</source>
            <translation>Ошибки</translation>
        </message>
        <message>
            <source>Armor</source>
            <translation>Броня</translation>
        </message>
        <message>
            <source>Spaced armor:</source>
            <translation>Экранная броня:</translation>
        </message>
        <message>
            <source>Regular armor:</source>
            <translation>Основная броня:</translation>
        </message>
        <message>
            <source>Hide Spaced Armor</source>
            <translation>Скрыть экраны</translation>
        </message>
        <message>
            <source>About Qt...</source>
            <translation>О Qt...</translation>
        </message>
        <message>
            <source>About Ferrox...</source>
            <translation>О программе Ferrox...</translation>
        </message>
        <message>
            <source>&amp;Exit</source>
            <translation>&amp;Выход</translation>
        </message>
        <message>
            <source>Preferences...</source>
            <translation>Параметры...</translation>
        </message>
        <message>
            <source>F2</source>
            <translation>F2</translation>
        </message>
        <message>
            <source>Save Camera View...</source>
            <translation>Сохранить вид камеры...</translation>
        </message>
        <message>
            <source>F3</source>
            <translation>F3</translation>
        </message>
        <message>
            <source>Load Camera View...</source>
            <translation>Загрузить вид камеры...</translation>
        </message>
        <message>
            <source>F4</source>
            <translation>F4</translation>
        </message>
        <message>
            <source>Reset Camera View...</source>
            <translation>Сбросить вид камеры...</translation>
        </message>
        <message>
            <source>Reset Camera</source>
            <translation>Сбросить камеру</translation>
        </message>
        <message>
            <source>F5</source>
            <translation>F5</translation>
        </message>
        <message>
            <source>Solid Mode</source>
            <translation>Сплошной режим</translation>
        </message>
        <message>
            <source>F6</source>
            <translation>F6</translation>
        </message>
        <message>
            <source>Wireframe Mode</source>
            <translation>Каркасный режим</translation>
        </message>
        <message>
            <source>F7</source>
            <translation>F7</translation>
        </message>
        <message>
            <source>Solid/Wireframe Mode</source>
            <translation>Сплошной с каркасом</translation>
        </message>
        <message>
            <source>F8</source>
            <translation>F8</translation>
        </message>
        <message>
            <source>Shift+O</source>
            <translation>Shift+O</translation>
        </message>
        <message>
            <source>Shift+N</source>
            <translation>Shift+N</translation>
        </message>
        <message>
            <source>Extract Tank Textures</source>
            <translation>Извлечь текстуры танка</translation>
        </message>
        <message>
            <source>Shift+E</source>
            <translation>Shift+E</translation>
        </message>
        <message>
            <source>Edit Textures</source>
            <translation>Редактировать текстуры</translation>
        </message>
        <message>
            <source>Shift+T</source>
            <translation>Shift+T</translation>
        </message>
        <message>
            <source>Generate UV Map...</source>
            <translation>Создать UV-развёртку...</translation>
        </message>
        <message>
            <source>Shift+U</source>
            <translation>Shift+U</translation>
        </message>
        <message>
            <source>Ferrox Help...</source>
            <translation>Справка Ferrox...</translation>
        </message>
        <message>
            <source>F1</source>
            <translation>F1</translation>
        </message>
        <message>
            <source>Take Screenshot</source>
            <translation>Снимок экрана</translation>
        </message>
        <message>
            <source>F12</source>
            <translation>F12</translation>
        </message>
        <message>
            <source>Save Screenshot to file</source>
            <translation>Сохранить снимок в файл</translation>
        </message>
        <message>
            <source>Shift+F12</source>
            <translation>Shift+F12</translation>
        </message>
        <message>
            <source>Screen Shot Form</source>
            <translation>Окно снимков</translation>
        </message>
        <message>
            <source>Ctrl+F12</source>
            <translation>Ctrl+F12</translation>
        </message>
        <message>
            <source>Open Screenshot Directory</source>
            <translation>Открыть папку снимков</translation>
        </message>
        <message>
            <source>Reload Scene</source>
            <translation>Перезагрузить сцену</translation>
        </message>
        <message>
            <source>Backspace</source>
            <translation>Backspace</translation>
        </message>
        <message>
            <source>Hide all Widgets</source>
            <translation>Скрыть все панели</translation>
        </message>
        <message>
            <source>Fullscreen</source>
            <translation>Полный экран</translation>
        </message>
        <message>
            <source>Toggle Fullscreen mode</source>
            <translation>Переключить полноэкранный режим</translation>
        </message>
        <message>
            <source>Visual Editor</source>
            <translation>Редактор visual</translation>
        </message>
        <message>
            <source>Open Visual Editor</source>
            <translation>Открыть редактор visual</translation>
        </message>
        <message>
            <source>Check for Updates...</source>
            <translation>Проверить обновления...</translation>
        </message>
        <message>
            <source>Save Layout</source>
            <translation>Сохранить раскладку</translation>
        </message>
        <message>
            <source>Load default layout</source>
            <translation>Загрузить раскладку по умолчанию</translation>
        </message>
        <message>
            <source>Saved window layout</source>
            <translation>Раскладка окна сохранена</translation>
        </message>
        <message>
            <source>Restored default layout</source>
            <translation>Восстановлена раскладка по умолчанию</translation>
        </message>
        <message>
            <source>Auto Update has been disabled</source>
            <translation>Автообновление отключено</translation>
        </message>
        <message>
            <source>Reloading Scene.</source>
            <translation>Перезагрузка сцены.</translation>
        </message>
        <message>
            <source>Settings saved.</source>
            <translation>Настройки сохранены.</translation>
        </message>
        <message>
            <source>Failed to load tank: </source>
            <translation>Не удалось загрузить танк: </translation>
        </message>
        <message>
            <source>Could not find tank: </source>
            <translation>Не удалось найти танк: </translation>
        </message>
        <message>
            <source>Could not locate the user guide: </source>
            <translation>Не удалось найти руководство пользователя: </translation>
        </message>
        <message>
            <source>Copied image to clipboard.</source>
            <translation>Изображение скопировано в буфер обмена.</translation>
        </message>
        <message>
            <source>Image saved ok.</source>
            <translation>Изображение сохранено.</translation>
        </message>
        <message>
            <source>Failed to save screenshot.</source>
            <translation>Не удалось сохранить снимок экрана.</translation>
        </message>
        <message>
            <source>Gavrel path does not appear to be valid. Please check Preferences again.</source>
            <translation>Путь к Gavrel, похоже, неверен. Проверьте настройки ещё раз.</translation>
        </message>
        <message>
            <source>Application requires restart for settings to take effect.</source>
            <translation>Чтобы настройки вступили в силу, программу нужно перезапустить.</translation>
        </message>
    </context>
    <context>
        <name>MessageBoxes</name>
        <message>
            <source>Ok</source>
            <translation>ОК</translation>
        </message>
        <message>
            <source>No</source>
            <translation>Нет</translation>
        </message>
        <message>
            <source>Cancel</source>
            <translation>Отмена</translation>
        </message>
        <message>
            <source>Abort</source>
            <translation>Прервать</translation>
        </message>
        <message>
            <source>Yes</source>
            <translation>Да</translation>
        </message>
        <message>
            <source>
Application will now close.</source>
            <translation>
Программа будет закрыта.</translation>
        </message>
    </context>
    <context>
        <name>RenderWidget</name>
        <message>
            <source>Save Camera File</source>
            <translation>Сохранить файл камеры</translation>
        </message>
        <message>
            <source>Open Camera File</source>
            <translation>Открыть файл камеры</translation>
        </message>
        <message>
            <source>Scene Reload done.</source>
            <translation>Сцена перезагружена.</translation>
        </message>
    </context>
    <context>
        <name>Settings</name>
        <message>
            <source>Could not locate settings file, creating a new one.
The preferences dialog will now be shown, please make sure the Gavrel path is correct.</source>
            <translation>Файл настроек не найден, создаётся новый.
Сейчас откроется окно параметров; проверьте, правильно ли указан путь к Gavrel.</translation>
        </message>
        <message>
            <source>Could not open settings file.</source>
            <translation>Не удалось открыть файл настроек.</translation>
        </message>
        <message>
            <source>Could not set XML content.</source>
            <translation>Не удалось разобрать XML.</translation>
        </message>
    </context>
    <context>
        <name>TankListView</name>
        <message>
            <source>Context menu</source>
            <translation>Контекстное меню</translation>
        </message>
        <message>
            <source>Open tank directory</source>
            <translation>Открыть папку танка</translation>
        </message>
        <message>
            <source>Create tank directory</source>
            <translation>Создать папку танка</translation>
        </message>
        <message>
            <source>Extract all tank textures</source>
            <translation>Извлечь все текстуры танка</translation>
        </message>
        <message>
            <source>Edit tank textures</source>
            <translation>Редактировать текстуры танка</translation>
        </message>
        <message>
            <source>Generate UV Map</source>
            <translation>Создать UV-развёртку</translation>
        </message>
        <message>
            <source>Export tank mesh</source>
            <translation>Экспорт модели танка</translation>
        </message>
        <message>
            <source> directory does not exist in the mod folder.
Would you like to create it?</source>
            <translation>: папки нет в папке модов.
Создать её?</translation>
        </message>
        <message>
            <source>Create directory completed.</source>
            <translation>Папка создана.</translation>
        </message>
        <message>
            <source>Extracting texture files</source>
            <translation>Извлечение файлов текстур</translation>
        </message>
        <message>
            <source>Cancel</source>
            <translation>Отмена</translation>
        </message>
        <message>
            <source>Extraction completed.</source>
            <translation>Извлечение завершено.</translation>
        </message>
        <message>
            <source>Edit texture not available in collision mode.</source>
            <translation>Редактирование текстур недоступно в режиме коллизий.</translation>
        </message>
        <message>
            <source> textures do not exist in the mod folder.
Would you like to extract them?</source>
            <translation>: текстур нет в папке модов.
Извлечь их?</translation>
        </message>
        <message>
            <source>Export tank completed.</source>
            <translation>Экспорт танка завершён.</translation>
        </message>
    </context>
    <context>
        <name>TankLoader</name>
        <message>
            <source>Failed to parse xml file for tank: </source>
            <translation>Не удалось разобрать XML-файл танка: </translation>
        </message>
        <message>
            <source>Loading </source>
            <translation>Загрузка </translation>
        </message>
        <message>
            <source> Tank: </source>
            <translation> танка: </translation>
        </message>
        <message>
            <source> loaded in: </source>
            <translation> загружен за: </translation>
        </message>
        <message>
            <source> seconds</source>
            <translation> с</translation>
        </message>
    </context>
    <context>
        <name>TextOverlay</name>
        <message>
            <source>Nation</source>
            <translation>Нация</translation>
        </message>
        <message>
            <source>Name</source>
            <translation>Название</translation>
        </message>
        <message>
            <source>Category</source>
            <translation>Класс</translation>
        </message>
        <message>
            <source>Tier</source>
            <translation>Уровень</translation>
        </message>
        <message>
            <source>Hit Points</source>
            <translation>Прочность</translation>
        </message>
        <message>
            <source>Avg FPS: </source>
            <translation>Средний FPS: </translation>
        </message>
        <message>
            <source>Frame Time(ms): </source>
            <translation>Время кадра (мс): </translation>
        </message>
        <message>
            <source>Tank Triangle count: </source>
            <translation>Треугольников танка: </translation>
        </message>
        <message>
            <source>Total Scene Triangle count: </source>
            <translation>Всего треугольников сцены: </translation>
        </message>
    </context>
    <context>
        <name>main</name>
        <message>
            <source>Fatal Error</source>
            <translation>Критическая ошибка</translation>
        </message>
    </context>
    <context>
        <name>Log</name>
        <message>
            <source>Could not create user directory,this is most likely a permissions issue.
Please check that you have sufficient write access to: </source>
            <translation>Не удалось создать папку пользователя, вероятно, из-за прав доступа.
Проверьте, есть ли у вас право записи в: </translation>
        </message>
        <message>
            <source>Could not open log file,this is most likely a permissions issue.
Please check that you have sufficient write access to: </source>
            <translation>Не удалось открыть файл журнала, вероятно, из-за прав доступа.
Проверьте, есть ли у вас право записи в: </translation>
        </message>
    </context>
    <context>
        <name>AboutViewerWidget</name>
        <message>
            <source>About Ferrox</source>
            <translation>О программе Ferrox</translation>
        </message>
        <message>
            <source>About</source>
            <translation>О программе</translation>
        </message>
        <message>
            <source>Details</source>
            <translation>Сведения</translation>
        </message>
        <message>
            <source>Gavrel Version:</source>
            <translation>Версия Gavrel:</translation>
        </message>
        <message>
            <source>Version:</source>
            <translation>Версия:</translation>
        </message>
        <message>
            <source>Build:</source>
            <translation>Сборка:</translation>
        </message>
        <message>
            <source>www:</source>
            <translation>Сайт:</translation>
        </message>
        <message>
            <source>Translations</source>
            <translation>Переводы</translation>
        </message>
        <message>
            <source>Russian:</source>
            <translation>Русский:</translation>
        </message>
        <message>
            <source>Malaysian:</source>
            <translation>Малайский:</translation>
        </message>
        <message>
            <source>Portuguese:</source>
            <translation>Португальский:</translation>
        </message>
        <message>
            <source>License</source>
            <translation>Лицензия</translation>
        </message>
        <message>
            <source>OpenGL</source>
            <translation>OpenGL</translation>
        </message>
        <message>
            <source>Vendor:</source>
            <translation>Производитель:</translation>
        </message>
        <message>
            <source>Renderer:</source>
            <translation>Видеокарта:</translation>
        </message>
        <message>
            <source>GLSL:</source>
            <translation>GLSL:</translation>
        </message>
        <message>
            <source>Extensions:</source>
            <translation>Расширения:</translation>
        </message>
        <message>
            <source>Ok</source>
            <translation>ОК</translation>
        </message>
        <message>
            <source>Open in browser</source>
            <translation>Открыть в браузере</translation>
        </message>
        <message>
            <source>Ferrox team</source>
            <translation>Команда Ferrox</translation>
        </message>
        <message>
            <source>No translation yet</source>
            <translation>Перевода пока нет</translation>
        </message>
        <message>
            <source>&lt;p&gt;&lt;b&gt;Ferrox %1&lt;/b&gt;&lt;br&gt;Copyright &amp;copy; the Ferrox team.&lt;/p&gt;&lt;p&gt;Ferrox is free software. You may use it, copy it, change it and pass it on, alone or with your own work, provided this notice stays with every copy.&lt;/p&gt;&lt;p&gt;Ferrox comes without any warranty. Its makers are not liable for any harm that comes from using it.&lt;/p&gt;&lt;p&gt;Ferrox reads a Gavrel installation and never changes it. The game, its models, textures and texts belong to their owners; Ferrox is made by modders for modders and is not connected with the makers of the game.&lt;/p&gt;</source>
            <translation>&lt;p&gt;&lt;b&gt;Ferrox %1&lt;/b&gt;&lt;br&gt;Авторские права &amp;copy; команда Ferrox.&lt;/p&gt;&lt;p&gt;Ferrox — свободная программа. Её можно использовать, копировать, изменять и передавать другим, отдельно или вместе с собственной работой, если это уведомление сохраняется в каждой копии.&lt;/p&gt;&lt;p&gt;Ferrox предоставляется без каких-либо гарантий. Его авторы не несут ответственности за любой вред, возникший при его использовании.&lt;/p&gt;&lt;p&gt;Ferrox читает установленную игру Gavrel и никогда её не изменяет. Игра, её модели, текстуры и тексты принадлежат их владельцам; Ferrox создан моддерами для моддеров и не связан с создателями игры.&lt;/p&gt;</translation>
        </message>
    </context>
    <context>
        <name>UpdateCheck</name>
        <message>
            <source>Update</source>
            <translation>Обновление</translation>
        </message>
        <message>
            <source>New Version Available!</source>
            <translation>Доступна новая версия!</translation>
        </message>
        <message>
            <source>Installed Version:</source>
            <translation>Установленная версия:</translation>
        </message>
        <message>
            <source>Lastest Version:</source>
            <translation>Последняя версия:</translation>
        </message>
        <message>
            <source>Url:</source>
            <translation>Адрес:</translation>
        </message>
        <message>
            <source>Notes:</source>
            <translation>Примечания:</translation>
        </message>
        <message>
            <source>OK</source>
            <translation>ОК</translation>
        </message>
        <message>
            <source>Cancel</source>
            <translation>Отмена</translation>
        </message>
        <message>
            <source>There was a network error when checking for updates.</source>
            <translation>При проверке обновлений произошла сетевая ошибка.</translation>
        </message>
        <message>
            <source>You are running the latest version.</source>
            <translation>У вас установлена последняя версия.</translation>
        </message>
        <message>
            <source>The was a problem determining the correct version.</source>
            <translation>Не удалось определить правильную версию.</translation>
        </message>
        <message>
            <source>Click here for download</source>
            <translation>Нажмите здесь, чтобы скачать</translation>
        </message>
    </context>
    <context>
        <name>CamoLoader</name>
        <message>
            <source>You must load a tank first.</source>
            <translation>Сначала необходимо загрузить танк.</translation>
        </message>
        <message>
            <source>You must enable camouflage first.</source>
            <translation>Сначала необходимо включить камуфляж.</translation>
        </message>
        <message>
            <source>You must select a mod folder in the application preferences.</source>
            <translation>Необходимо выбрать папку модов в настройках программы.</translation>
        </message>
        <message>
            <source>Camo bake is only available in UnDamaged mode.</source>
            <translation>Запекание камуфляжа доступно только в режиме «Целый».</translation>
        </message>
        <message>
            <source>This tank is currently not supported by the camouflage baking system.</source>
            <translation>Этот танк пока не поддерживается системой запекания камуфляжа.</translation>
        </message>
        <message>
            <source>Aborting!</source>
            <translation>Прерывание!</translation>
        </message>
        <message>
            <source>Camouflage bake export complete.</source>
            <translation>Экспорт запечённого камуфляжа завершён.</translation>
        </message>
        <message>
            <source>Failed to find: </source>
            <translation>Не удалось найти: </translation>
        </message>
        <message>
            <source>in any zip archives.</source>
            <translation>ни в одном zip-архиве.</translation>
        </message>
        <message>
            <source>Export completed.</source>
            <translation>Экспорт завершён.</translation>
        </message>
    </context>
    <context>
        <name>EditTextureUI</name>
        <message>
            <source>Diffuse</source>
            <translation>Диффузные</translation>
        </message>
        <message>
            <source>Specular</source>
            <translation>Зеркальные</translation>
        </message>
        <message>
            <source>Normal</source>
            <translation>Нормали</translation>
        </message>
        <message>
            <source>Metallic</source>
            <translation>Металличность</translation>
        </message>
        <message>
            <source>Detail</source>
            <translation>Детализация</translation>
        </message>
        <message>
            <source>Exclusion</source>
            <translation>Исключения</translation>
        </message>
        <message>
            <source>Select a texture</source>
            <translation>Выберите текстуру</translation>
        </message>
        <message>
            <source>You must select a texture.</source>
            <translation>Необходимо выбрать текстуру.</translation>
        </message>
    </context>
    <context>
        <name>EditTextureUi</name>
        <message>
            <source>Edit Texture</source>
            <translation>Редактирование текстуры</translation>
        </message>
        <message>
            <source>Load</source>
            <translation>Открыть</translation>
        </message>
        <message>
            <source>Cancel</source>
            <translation>Отмена</translation>
        </message>
    </context>
    <context>
        <name>ScreenShotUI</name>
        <message>
            <source>Screenshot</source>
            <translation>Снимок экрана</translation>
        </message>
        <message>
            <source>Save Settings</source>
            <translation>Параметры сохранения</translation>
        </message>
        <message>
            <source>Width:</source>
            <translation>Ширина:</translation>
        </message>
        <message>
            <source>Height:</source>
            <translation>Высота:</translation>
        </message>
        <message>
            <source>Quality:</source>
            <translation>Качество:</translation>
        </message>
        <message>
            <source>Low</source>
            <translation>Низкое</translation>
        </message>
        <message>
            <source>High</source>
            <translation>Высокое</translation>
        </message>
        <message>
            <source>Load Preset:</source>
            <translation>Готовый размер:</translation>
        </message>
        <message>
            <source>Background transparency:</source>
            <translation>Прозрачный фон:</translation>
        </message>
        <message>
            <source>Save</source>
            <translation>Сохранить</translation>
        </message>
        <message>
            <source>Cancel</source>
            <translation>Отмена</translation>
        </message>
        <message>
            <source>Save Screenshot</source>
            <translation>Сохранить снимок экрана</translation>
        </message>
        <message>
            <source>Saving Screenshot</source>
            <translation>Сохранение снимка экрана</translation>
        </message>
        <message>
            <source>Screenshot save operation complete.</source>
            <translation>Снимок экрана сохранён.</translation>
        </message>
        <message>
            <source>Screenshot save operation failed.</source>
            <translation>Не удалось сохранить снимок экрана.</translation>
        </message>
    </context>
    <context>
        <name>UvGenerateForm</name>
        <message>
            <source>Generete UV Map</source>
            <translation>Создание UV-развёртки</translation>
        </message>
        <message>
            <source>Generate Preview</source>
            <translation>Создать просмотр</translation>
        </message>
        <message>
            <source>Generate Settings</source>
            <translation>Параметры создания</translation>
        </message>
        <message>
            <source>Brush Colour:</source>
            <translation>Цвет линий:</translation>
        </message>
        <message>
            <source>...</source>
            <translation>...</translation>
        </message>
        <message>
            <source>Fill Colour:</source>
            <translation>Цвет заливки:</translation>
        </message>
        <message>
            <source>Background Colour:</source>
            <translation>Цвет фона:</translation>
        </message>
        <message>
            <source>Line Width:</source>
            <translation>Толщина линий:</translation>
        </message>
        <message>
            <source>Save Settings</source>
            <translation>Параметры сохранения</translation>
        </message>
        <message>
            <source>Save Fromat:</source>
            <translation>Формат файла:</translation>
        </message>
        <message>
            <source>PNG</source>
            <translation>PNG</translation>
        </message>
        <message>
            <source>TIFF</source>
            <translation>TIFF</translation>
        </message>
        <message>
            <source>SVG</source>
            <translation>SVG</translation>
        </message>
        <message>
            <source>Resolution:</source>
            <translation>Разрешение:</translation>
        </message>
        <message>
            <source>x1</source>
            <translation>x1</translation>
        </message>
        <message>
            <source>x2</source>
            <translation>x2</translation>
        </message>
        <message>
            <source>x3</source>
            <translation>x3</translation>
        </message>
        <message>
            <source>x4</source>
            <translation>x4</translation>
        </message>
        <message>
            <source>Save Active</source>
            <translation>Сохранить текущую</translation>
        </message>
        <message>
            <source>Save All</source>
            <translation>Сохранить все</translation>
        </message>
        <message>
            <source>Close</source>
            <translation>Закрыть</translation>
        </message>
        <message>
            <source>Ferrox SVG Generator</source>
            <translation>Генератор SVG Ferrox</translation>
        </message>
    </context>
    <context>
        <name>UvGenerateUI</name>
        <message>
            <source>Warning</source>
            <translation>Предупреждение</translation>
        </message>
        <message>
            <source>You must generate a UV Map first.</source>
            <translation>Сначала создайте UV-развёртку.</translation>
        </message>
        <message>
            <source>Could not match texture name.</source>
            <translation>Не удалось найти текстуру с таким именем.</translation>
        </message>
        <message>
            <source>UV Map save operation complete.</source>
            <translation>UV-развёртка сохранена.</translation>
        </message>
        <message>
            <source>Failed to generate UV map for texuture.</source>
            <translation>Не удалось создать UV-развёртку для текстуры.</translation>
        </message>
        <message>
            <source>Save UV Map</source>
            <translation>Сохранить UV-развёртку</translation>
        </message>
        <message>
            <source>Saving UV Map</source>
            <translation>Сохранение UV-развёртки</translation>
        </message>
    </context>
    <context>
        <name>Preferences</name>
        <message>
            <source>Preferences</source>
            <translation>Настройки</translation>
        </message>
        <message>
            <source>Paths</source>
            <translation>Пути</translation>
        </message>
        <message>
            <source>General</source>
            <translation>Общие</translation>
        </message>
        <message>
            <source>Renderer</source>
            <translation>Отрисовка</translation>
        </message>
        <message>
            <source>Gavrel Path:       </source>
            <translation>Путь к Gavrel:       </translation>
        </message>
        <message>
            <source>...</source>
            <translation>...</translation>
        </message>
        <message>
            <source>Mod Path:       </source>
            <translation>Папка модов:       </translation>
        </message>
        <message>
            <source>Image Editor: </source>
            <translation>Редактор изображений: </translation>
        </message>
        <message>
            <source>Screenshots:  </source>
            <translation>Снимки экрана:  </translation>
        </message>
        <message>
            <source>ScreenShots:</source>
            <translation>Снимки экрана:</translation>
        </message>
        <message>
            <source>Background transparency:</source>
            <translation>Прозрачный фон:</translation>
        </message>
        <message>
            <source>Disabled</source>
            <translation>Выключено</translation>
        </message>
        <message>
            <source>Enabled</source>
            <translation>Включено</translation>
        </message>
        <message>
            <source>Filename format:</source>
            <translation>Формат имени файла:</translation>
        </message>
        <message>
            <source>Tankname</source>
            <translation>Имя танка</translation>
        </message>
        <message>
            <source>Tankname_timestamp</source>
            <translation>Имя танка_время</translation>
        </message>
        <message>
            <source>Camera Panning:</source>
            <translation>Сдвиг камеры:</translation>
        </message>
        <message>
            <source>Invert X</source>
            <translation>Инвертировать X</translation>
        </message>
        <message>
            <source>Invert Y</source>
            <translation>Инвертировать Y</translation>
        </message>
        <message>
            <source>Miscellaneous:</source>
            <translation>Разное:</translation>
        </message>
        <message>
            <source>Vertical tabs</source>
            <translation>Вертикальные вкладки</translation>
        </message>
        <message>
            <source>Use non native file dialogs</source>
            <translation>Не использовать системные диалоги файлов</translation>
        </message>
        <message>
            <source>Prompt to overwrite textures</source>
            <translation>Спрашивать перед перезаписью текстур</translation>
        </message>
        <message>
            <source>Anti-Aliasing:</source>
            <translation>Сглаживание:</translation>
        </message>
        <message>
            <source>Texture Filtering:</source>
            <translation>Фильтрация текстур:</translation>
        </message>
        <message>
            <source>VSync:</source>
            <translation>Вертикальная синхронизация:</translation>
        </message>
        <message>
            <source>ShadowMap Size:</source>
            <translation>Размер карты теней:</translation>
        </message>
        <message>
            <source>Shadow Samples:</source>
            <translation>Выборок тени:</translation>
        </message>
        <message>
            <source>Ok</source>
            <translation>ОК</translation>
        </message>
        <message>
            <source>Cancel</source>
            <translation>Отмена</translation>
        </message>
        <message>
            <source>Gavrel path is empty, using default path.</source>
            <translation>Путь к Gavrel не указан, используется путь по умолчанию.</translation>
        </message>
    </context>
    <context>
        <name>FindReplaceForm</name>
        <message>
            <source>Find and Replace</source>
            <translation>Найти и заменить</translation>
        </message>
        <message>
            <source>&amp;Find:</source>
            <translation>&amp;Найти:</translation>
        </message>
        <message>
            <source>R&amp;eplace with:</source>
            <translation>&amp;Заменить на:</translation>
        </message>
        <message>
            <source>D&amp;irection</source>
            <translation>&amp;Направление</translation>
        </message>
        <message>
            <source>&amp;Down</source>
            <translation>&amp;Вниз</translation>
        </message>
        <message>
            <source>&amp;Up</source>
            <translation>&amp;Вверх</translation>
        </message>
        <message>
            <source>&amp;Options</source>
            <translation>&amp;Параметры</translation>
        </message>
        <message>
            <source>&amp;Case sensitive</source>
            <translation>&amp;Учитывать регистр</translation>
        </message>
        <message>
            <source>&amp;Whole words only</source>
            <translation>&amp;Только слова целиком</translation>
        </message>
        <message>
            <source>R&amp;egular Expression</source>
            <translation>Р&amp;егулярное выражение</translation>
        </message>
        <message>
            <source>&amp;Find</source>
            <translation>&amp;Найти</translation>
        </message>
        <message>
            <source>&amp;Close</source>
            <translation>&amp;Закрыть</translation>
        </message>
        <message>
            <source>&amp;Replace</source>
            <translation>&amp;Заменить</translation>
        </message>
        <message>
            <source>Replace &amp;All</source>
            <translation>Заменить &amp;все</translation>
        </message>
        <message>
            <source>no match found</source>
            <translation>совпадений не найдено</translation>
        </message>
        <message numerus="yes">
            <source>Replaced %n occurrence(s)</source>
            <translation>
                <numerusform>Заменено %n совпадение</numerusform>
                <numerusform>Заменено %n совпадения</numerusform>
                <numerusform>Заменено %n совпадений</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>VisualEditWidget</name>
        <message>
            <source>Visual Editor</source>
            <translation>Редактор визуалов</translation>
        </message>
        <message>
            <source>Chassis Visual</source>
            <translation>Визуал ходовой</translation>
        </message>
        <message>
            <source>Undo</source>
            <translation>Отменить</translation>
        </message>
        <message>
            <source>Redo</source>
            <translation>Повторить</translation>
        </message>
        <message>
            <source>Cut</source>
            <translation>Вырезать</translation>
        </message>
        <message>
            <source>Copy</source>
            <translation>Копировать</translation>
        </message>
        <message>
            <source>Paste</source>
            <translation>Вставить</translation>
        </message>
        <message>
            <source>Save to the mod folder</source>
            <translation>Сохранить в папку модов</translation>
        </message>
        <message>
            <source>Find and replace</source>
            <translation>Найти и заменить</translation>
        </message>
        <message>
            <source>Hull Visual</source>
            <translation>Визуал корпуса</translation>
        </message>
        <message>
            <source>Turret Visual</source>
            <translation>Визуал башни</translation>
        </message>
        <message>
            <source>Gun Visual</source>
            <translation>Визуал орудия</translation>
        </message>
        <message>
            <source>You must select a mod folder in the application preferences.</source>
            <translation>Необходимо выбрать папку модов в настройках программы.</translation>
        </message>
        <message>
            <source>Failed to create directory</source>
            <translation>Не удалось создать папку</translation>
        </message>
        <message>
            <source>Visual file saved ok.</source>
            <translation>Файл визуала сохранён.</translation>
        </message>
        <message>
            <source>Failed to open file for writing: </source>
            <translation>Не удалось открыть файл для записи: </translation>
        </message>
        <message>
            <source>Failed to write file: </source>
            <translation>Не удалось записать файл: </translation>
        </message>
    </context>
    <context>
        <name>ShellChoice</name>
        <message>
            <source>Custom</source>
            <translation>Свой</translation>
        </message>
        <message>
            <source>%1, %2 mm; penetration %3 mm at 100 m, %4 mm at 500 m</source>
            <translation>%1, %2 мм; пробитие %3 мм на 100 м, %4 мм на 500 м</translation>
        </message>
    </context>
    <context>
        <name>WeakSpotDisplay</name>
        <message>
            <source>Chance to penetrate</source>
            <translation>Вероятность пробития</translation>
        </message>
    </context>
</TS>
