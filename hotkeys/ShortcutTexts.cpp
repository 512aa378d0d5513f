#include "hotkeys/ShortcutTexts.h"

#include <algorithm>
#include <array>

namespace KeyboardShortcuts::ShortcutTexts {
namespace {

constexpr std::array<std::string_view, 8> languages{"en", "es", "zh", "hi", "ar", "pt", "fr", "ru"};

struct Entry {
    std::string_view key;
    /// In the order of `languages`.
    std::array<std::string_view, languages.size()> texts;
};

constexpr auto entries = std::to_array<Entry>({
    {usedByMenuItem,
     {"This combination already does something in Curtain's own windows.",
      "Esta combinación ya tiene una función en las ventanas de Curtain.",
      "此组合键已在 Curtain 的窗口中使用。", "Curtain की अपनी विंडो में यह कुंजी-संयोजन पहले से किसी और काम के लिए है।",
      "هذا الاختصار مستخدم بالفعل في نوافذ Curtain.",
      "Esta combinação já tem uma função nas janelas do Curtain.",
      "Cette combinaison a déjà un rôle dans les fenêtres de Curtain.",
      "Это сочетание уже занято в окнах самого Curtain."}},
    {disallowed,
     {"The system keeps this combination for itself. Choose another one.",
      "El sistema se reserva esta combinación. Elige otra.", "此组合键由系统保留，请换一个。",
      "यह कुंजी-संयोजन सिस्टम के लिए आरक्षित है। कोई दूसरा चुनें।", "هذا الاختصار محجوز للنظام. اختر غيره.",
      "Esta combinação é reservada ao sistema. Escolha outra.",
      "Le système se réserve cette combinaison. Choisissez-en une autre.",
      "Это сочетание зарезервировано системой. Выберите другое."}},
    {usedBySystem,
     {"The desktop or another program already uses this combination.",
      "El entorno de escritorio u otro programa ya usa esta combinación.",
      "桌面环境或其他程序已在使用此组合键。", "डेस्कटॉप या कोई दूसरा प्रोग्राम पहले से यह कुंजी-संयोजन इस्तेमाल करता है।",
      "هذا الاختصار مستخدم بالفعل في بيئة سطح المكتب أو في برنامج آخر.",
      "O ambiente gráfico ou outro programa já usa esta combinação.",
      "L’environnement de bureau ou un autre programme utilise déjà cette combinaison.",
      "Это сочетание уже занято рабочей средой или другой программой."}},
    {canBeChanged,
     {"Most desktops let you change their shortcuts in the keyboard settings.",
      "Casi todos los entornos de escritorio permiten cambiar sus atajos en la configuración del teclado.",
      "大多数桌面环境的快捷键都可以在键盘设置中更改。", "ज़्यादातर डेस्कटॉप के शॉर्टकट कीबोर्ड सेटिंग में बदले जा सकते हैं।",
      "تتيح معظم بيئات سطح المكتب تغيير اختصاراتها في إعدادات لوحة المفاتيح.",
      "A maioria dos ambientes gráficos permite mudar os atalhos nas configurações de teclado.",
      "La plupart des environnements de bureau permettent de modifier leurs raccourcis dans les paramètres "
      "du clavier.",
      "В большинстве рабочих сред сочетания клавиш можно изменить в настройках клавиатуры."}},
    {forceUse,
     {"Use Anyway", "Usar de todos modos", "仍然使用", "फिर भी इस्तेमाल करें", "استخدامه على أي حال",
      "Usar mesmo assim", "Utiliser quand même", "Всё равно использовать"}},
    {chooseAnother,
     {"Choose Another", "Elegir otra", "换一个", "दूसरा चुनें", "اختيار غيره", "Escolher outra", "Changer",
      "Другое"}},
    {ok, {"OK", "Aceptar", "确定", "ठीक है", "حسنًا", "OK", "OK", "ОК"}},
    {recordShortcut,
     {"Record shortcut", "Establecer atajo", "录制快捷键", "शॉर्टकट रिकॉर्ड करें", "تسجيل اختصار",
      "Definir atalho", "Définir un raccourci", "Задать сочетание"}},
    {pressShortcut,
     {"Press keys…", "Pulsa las teclas…", "请按组合键…", "कुंजियाँ दबाएँ…", "اضغط المفاتيح…",
      "Pressione as teclas…", "Appuyez sur les touches…", "Нажмите клавиши…"}},
    {clearShortcut,
     {"Clear the shortcut", "Borrar el atajo", "清除快捷键", "शॉर्टकट हटाएँ", "مسح الاختصار", "Limpar o atalho",
      "Effacer le raccourci", "Удалить сочетание"}},
});

} // namespace

std::string_view string(std::string_view key, std::string_view lang) {
    const auto* const entry = std::ranges::find(entries, key, &Entry::key);
    if (entry == entries.end()) {
        return {};
    }
    const auto* const language = std::ranges::find(languages, lang);
    const auto index =
        language == languages.end() ? 0 : static_cast<std::size_t>(language - languages.begin());
    return entry->texts.at(index);
}

} // namespace KeyboardShortcuts::ShortcutTexts
