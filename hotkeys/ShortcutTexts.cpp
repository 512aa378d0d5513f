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
      "Esta combinación ya hace algo en las ventanas de Curtain.",
      "此组合键在 Curtain 自己的窗口中已有用途。", "यह कुंजी-संयोजन Curtain की अपनी विंडो में पहले से काम करता है।",
      "لهذه التركيبة وظيفة بالفعل في نوافذ Curtain.", "Esta combinação já faz algo nas janelas do Curtain.",
      "Cette combinaison a déjà un rôle dans les fenêtres de Curtain.",
      "Это сочетание уже действует в окнах самого Curtain."}},
    {disallowed,
     {"The system keeps this combination for itself. Choose another one.",
      "El sistema se reserva esta combinación. Elige otra.", "此组合键由系统保留，请换一个。",
      "यह कुंजी-संयोजन सिस्टम के लिए आरक्षित है। कोई दूसरा चुनें।", "يحتفظ النظام بهذه التركيبة لنفسه. اختر غيرها.",
      "O sistema reserva esta combinação para si. Escolha outra.",
      "Le système se réserve cette combinaison. Choisissez-en une autre.",
      "Это сочетание система оставляет за собой. Выберите другое."}},
    {usedBySystem,
     {"The desktop or another program already uses this combination.",
      "El escritorio u otro programa ya usa esta combinación.", "桌面环境或其他程序已在使用此组合键。",
      "डेस्कटॉप या कोई दूसरा प्रोग्राम पहले से यह कुंजी-संयोजन इस्तेमाल करता है।",
      "يستخدم سطح المكتب أو برنامج آخر هذه التركيبة بالفعل.",
      "A área de trabalho ou outro programa já usa esta combinação.",
      "Le bureau ou un autre programme utilise déjà cette combinaison.",
      "Рабочий стол или другая программа уже использует это сочетание."}},
    {canBeChanged,
     {"Most desktops let you change their shortcuts in the keyboard settings.",
      "Casi todos los escritorios permiten cambiar sus atajos en la configuración del teclado.",
      "大多数桌面环境都可以在键盘设置中更改自己的快捷键。",
      "ज़्यादातर डेस्कटॉप में उनके शॉर्टकट कीबोर्ड सेटिंग में बदले जा सकते हैं।",
      "تتيح معظم أسطح المكتب تغيير اختصاراتها في إعدادات لوحة المفاتيح.",
      "A maioria dos ambientes permite mudar os atalhos nas configurações de teclado.",
      "La plupart des bureaux permettent de modifier leurs raccourcis dans les paramètres du clavier.",
      "В большинстве сред сочетания можно изменить в настройках клавиатуры."}},
    {forceUse,
     {"Use Anyway", "Usar de todos modos", "仍然使用", "फिर भी इस्तेमाल करें", "استخدامها على أي حال",
      "Usar mesmo assim", "Utiliser quand même", "Всё равно использовать"}},
    {ok, {"OK", "Aceptar", "好", "ठीक है", "حسنًا", "OK", "OK", "ОК"}},
    {recordShortcut,
     {"Record shortcut", "Grabar atajo", "录制快捷键", "शॉर्टकट रिकॉर्ड करें", "تسجيل اختصار", "Gravar atalho",
      "Enregistrer un raccourci", "Записать сочетание"}},
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
