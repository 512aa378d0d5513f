#include "Curtain/PlatformWording.h"

#include "core/Localizer.h"
#include "core/Preferences.h"

#include <algorithm>
#include <array>

namespace Curtain {
namespace {

using CurtainCore::AppLanguage;
using CurtainCore::Localizer;
using CurtainCore::LocKey;

/// One text in every language. docs/translating.md says what holds for all texts.
struct Texts {
    std::string_view en;
    std::string_view es;
    std::string_view zh;
    std::string_view hi;
    std::string_view ar;
    std::string_view pt;
    std::string_view fr;
    std::string_view ru;
};

template <class Key>
struct Entry {
    Key key;
    Texts texts;
};

/// Stands for the text of core/texts, where that is already true on Linux.
constexpr std::string_view kept;

// Do Not Disturb is named as the desktops name it: No molestar, 勿扰模式, परेशान न करें, عدم الإزعاج, Não
// perturbe, Ne pas déranger, Не беспокоить; in quotation marks, but for Chinese, where it does not run into
// the rest of the text. "Session" is what one logs in to: sesión, 会话, सत्र, جلسة, sessão, session, сеанс.
constexpr auto replacedTexts = std::to_array<Entry<LocKey>>({
    // A button. It opens a page of the desktop's settings and switches nothing.
    {LocKey::openFocusSettings,
     {.en = "Open Do Not Disturb Settings",
      .es = "Abrir la configuración de «No molestar»",
      .zh = "打开勿扰模式设置",
      .hi = "‘परेशान न करें’ सेटिंग खोलें",
      .ar = "فتح إعدادات «عدم الإزعاج»",
      .pt = "Abrir configurações do “Não perturbe”",
      .fr = "Ouvrir les paramètres « Ne pas déranger »",
      .ru = "Открыть настройки режима «Не беспокоить»"}},
    {LocKey::hideFinder,
     {.en = "Hide File Manager",
      .es = "Ocultar el gestor de archivos",
      .zh = "隐藏文件管理器",
      .hi = "फ़ाइल मैनेजर छिपाएँ",
      .ar = "إخفاء مدير الملفات",
      .pt = "Ocultar o gerenciador de arquivos",
      .fr = "Masquer le gestionnaire de fichiers",
      .ru = "Скрыть файловый менеджер"}},
    // In small letters, since every desktop has its own name for its settings.
    {LocKey::openSystemSettings,
     {.en = "Open system settings",
      .es = kept,
      .zh = kept,
      .hi = kept,
      .ar = kept,
      .pt = kept,
      .fr = kept,
      .ru = kept}},
    // A small button that opens the same page as openFocusSettings.
    {LocKey::openFocus,
     {.en = "Open Do Not Disturb",
      .es = "Abrir «No molestar»",
      .zh = "打开勿扰设置",
      .hi = "‘परेशान न करें’ खोलें",
      .ar = "فتح «عدم الإزعاج»",
      .pt = "Abrir “Não perturbe”",
      .fr = "Ouvrir « Ne pas déranger »",
      .ru = "Открыть «Не беспокоить»"}},
    // Sharing is noticed by the screen being captured, whichever program does it.
    {LocKey::autoDetectNote,
     {.en = "Note: Sharing from a browser is detected too. Changing this takes effect on relaunch.",
      .es = "Nota: también se detecta si compartes desde el navegador. El cambio se aplica al reiniciar "
            "Curtain.",
      .zh = "提示：在浏览器中共享屏幕也能检测到。更改将在重新启动 Curtain 后生效。",
      .hi = "ध्यान दें: ब्राउज़र से स्क्रीन शेयर करने पर भी पता चल जाता है। बदलाव Curtain को फिर से शुरू करने पर लागू होगा।",
      .ar = "ملاحظة: تُكتشف مشاركة الشاشة من المتصفح أيضًا. يسري التغيير بعد إعادة تشغيل Curtain.",
      .pt = "Nota: o compartilhamento pelo navegador também é detectado. A mudança vale após reiniciar o "
            "Curtain.",
      .fr = "Remarque : le partage depuis le navigateur est aussi détecté. Le changement prend effet au "
            "redémarrage de Curtain.",
      .ru = "Примечание: показ экрана из браузера тоже распознаётся. Изменение вступит в силу после "
            "перезапуска Curtain."}},
    {LocKey::notifNote,
     {.en = "Some desktops don't say whether Do Not Disturb is on, so this is a manual reminder.",
      .es = "Algunos entornos de escritorio no indican si «No molestar» está activado, así que esto se marca "
            "a mano.",
      .zh = "部分桌面环境不会告知勿扰模式是否已开启，因此这一项需要你自行确认。",
      .hi = "कुछ डेस्कटॉप नहीं बताते कि ‘परेशान न करें’ चालू है या नहीं, इसलिए यह सिर्फ़ याद दिलाने के लिए है।",
      .ar = "لا تتيح بعض بيئات سطح المكتب معرفة ما إذا كان «عدم الإزعاج» مفعّلًا، لذا فهذا تذكير يدوي.",
      .pt = "Alguns ambientes gráficos não informam se o “Não perturbe” está ativado; por isso, a marcação é "
            "manual.",
      .fr = "Certains environnements de bureau n’indiquent pas si « Ne pas déranger » est activé : c’est "
            "donc à vous de l’indiquer ici.",
      .ru = "Некоторые рабочие среды не сообщают, включён ли режим «Не беспокоить», поэтому это лишь "
            "напоминание."}},
    {LocKey::onboardBody,
     {.en =
          "Before each call, Curtain checks your camera, microphone, notifications and screen so you don't "
          "share anything private. It needs your permission for each — everything stays on your computer and "
          "nothing is recorded or uploaded.",
      .es =
          "Antes de cada llamada, Curtain comprueba tu cámara, micrófono, notificaciones y pantalla para que "
          "no compartas nada privado. Necesita tu permiso para cada cosa: todo se queda en tu equipo y nada "
          "se graba ni se sube.",
      .zh = "每次通话前，Curtain 会检查你的摄像头、麦克风、通知和屏幕，避免你共享任何私密内容。"
            "每一项都需要你的许可——一切都留在你的电脑上，不会录制或上传任何内容。",
      .hi = "हर कॉल से पहले Curtain आपका कैमरा, माइक्रोफ़ोन, सूचनाएँ और स्क्रीन जाँचता है, ताकि कुछ निजी शेयर न हो "
            "जाए। हर एक के लिए आपकी अनुमति चाहिए — सब कुछ आपके कंप्यूटर पर ही रहता है और कुछ भी रिकॉर्ड या अपलोड "
            "नहीं होता।",
      .ar = "قبل كل مكالمة، يفحص Curtain الكاميرا والميكروفون والإشعارات والشاشة حتى لا تشارك شيئًا خاصًا. "
            "يحتاج إلى إذنك لكل منها — يبقى كل شيء على جهازك ولا يُسجَّل شيء أو يُرفع.",
      .pt = "Antes de cada chamada, o Curtain verifica a câmera, o microfone, as notificações e a tela para "
            "você não compartilhar nada privado. Ele precisa da sua permissão para cada item — tudo fica no "
            "seu computador e nada é gravado nem enviado.",
      .fr =
          "Avant chaque appel, Curtain vérifie votre caméra, votre micro, vos notifications et votre écran "
          "pour que vous ne partagiez rien de privé. Il lui faut votre autorisation pour chacun : tout reste "
          "sur votre ordinateur, rien n’est enregistré ni envoyé.",
      .ru = "Перед каждым звонком Curtain проверяет камеру, микрофон, уведомления и экран, чтобы вы не "
            "показали ничего личного. На каждую проверку нужно ваше разрешение — всё остаётся на вашем "
            "компьютере, ничего не записывается и не отправляется."}},
    // A button.
    {LocKey::wizWelcomeCTA,
     {.en = "See if my computer qualifies",
      .es = "Ver si mi equipo es compatible",
      .zh = "看看我的电脑是否符合要求",
      .hi = "देखें कि मेरा कंप्यूटर उपयुक्त है या नहीं",
      .ar = "التحقق من ملاءمة جهازي",
      .pt = "Ver se meu computador é compatível",
      .fr = "Voir si mon ordinateur est compatible",
      .ru = "Проверить мой компьютер"}},
    // A title of one line.
    {LocKey::wizCompatTitle,
     {.en = "Your computer is perfect for this",
      .es = "Tu equipo es perfecto para esto",
      .zh = "你的电脑再合适不过了",
      .hi = "आपका कंप्यूटर इसके लिए एकदम सही है",
      .ar = "جهازك مناسب تمامًا",
      .pt = "Seu computador é perfeito para isso",
      .fr = "Votre ordinateur est parfait pour ça",
      .ru = "Ваш компьютер отлично подходит"}},
    // Why it is so may follow, as noHidingOnWayland, noWindowManager or logOutOnce.
    {LocKey::wizCompatOSFail,
     {.en = "Curtain can't hide apps in this session. Please log in to another one to continue.",
      .es = "Curtain no puede ocultar apps en esta sesión. Inicia otra para continuar.",
      .zh = "Curtain 无法在此会话中隐藏应用。请改用其他会话登录后再继续。",
      .hi = "Curtain इस सत्र में ऐप नहीं छिपा सकता। जारी रखने के लिए किसी दूसरे सत्र में लॉगिन करें।",
      .ar = "لا يستطيع Curtain إخفاء التطبيقات في هذه الجلسة. سجّل الدخول إلى جلسة أخرى للمتابعة.",
      .pt = "O Curtain não consegue ocultar apps nesta sessão. Entre em outra para continuar.",
      .fr = "Curtain ne peut pas masquer d’apps dans cette session. Ouvrez-en une autre.",
      .ru = "Curtain не может скрывать приложения в этом сеансе. Войдите в другой, чтобы продолжить."}},
    // What was found to work, above "Camera and microphone".
    {LocKey::wizCompatCheckOS,
     {.en = "Hiding apps",
      .es = "Ocultación de apps",
      .zh = "隐藏应用",
      .hi = "ऐप छिपाना",
      .ar = "إخفاء التطبيقات",
      .pt = "Ocultação de apps",
      .fr = "Masquage des apps",
      .ru = "Скрытие приложений"}},
    {LocKey::wizPermDeniedHint,
     {.en = "Access denied. Open the system settings to grant it, then retry.",
      .es = kept,
      .zh = kept,
      .hi = kept,
      .ar = kept,
      .pt = kept,
      .fr = kept,
      .ru = kept}},
    {LocKey::wizPermOpenSettings,
     {.en = "Open system settings",
      .es = kept,
      .zh = kept,
      .hi = kept,
      .ar = kept,
      .pt = kept,
      .fr = kept,
      .ru = kept}},
});

constexpr auto ownTexts = std::to_array<Entry<PlatformKey>>({
    {PlatformKey::noHidingOnWayland,
     {.en = "This Wayland desktop offers no way to hide other apps.",
      .es = "Este entorno de Wayland no ofrece ningún modo de ocultar otras apps.",
      .zh = "此 Wayland 桌面环境不支持隐藏其他应用。",
      .hi = "इस Wayland डेस्कटॉप में दूसरे ऐप छिपाने का कोई तरीका नहीं है।",
      .ar = "لا توفر بيئة Wayland هذه أي طريقة لإخفاء التطبيقات الأخرى.",
      .pt = "Este ambiente Wayland não oferece nenhum meio de ocultar outros apps.",
      .fr = "Cet environnement Wayland n’offre aucun moyen de masquer d’autres apps.",
      .ru = "Эта рабочая среда Wayland не позволяет скрывать другие приложения."}},
    {PlatformKey::noWindowManager,
     {.en = "No window manager is running, so apps can't be hidden.",
      .es = "No hay ningún gestor de ventanas en marcha, así que no se pueden ocultar apps.",
      .zh = "没有正在运行的窗口管理器，因此无法隐藏应用。",
      .hi = "कोई विंडो मैनेजर चालू नहीं है, इसलिए ऐप नहीं छिपाए जा सकते।",
      .ar = "لا يوجد مدير نوافذ قيد التشغيل، لذا لا يمكن إخفاء التطبيقات.",
      .pt = "Nenhum gerenciador de janelas está em execução; por isso, não é possível ocultar apps.",
      .fr = "Aucun gestionnaire de fenêtres n’est lancé : impossible de masquer des apps.",
      .ru = "Оконный менеджер не запущен, поэтому скрыть приложения нельзя."}},
    {PlatformKey::logOutOnce,
     {.en = "Log out and back in once so that Curtain can hide apps.",
      .es = "Cierra la sesión y vuelve a iniciarla una vez para que Curtain pueda ocultar apps.",
      .zh = "请注销并重新登录一次，之后 Curtain 就能隐藏应用。",
      .hi = "एक बार लॉगआउट करके फिर से लॉगिन करें, ताकि Curtain ऐप छिपा सके।",
      .ar = "سجّل الخروج ثم الدخول مرة واحدة ليتمكن Curtain من إخفاء التطبيقات.",
      .pt = "Encerre a sessão e entre novamente para que o Curtain possa ocultar apps.",
      .fr = "Fermez puis rouvrez votre session une fois pour que Curtain puisse masquer des apps.",
      .ru = "Выйдите из системы и войдите снова: после этого Curtain сможет скрывать приложения."}},
    {PlatformKey::windowManagerIgnoresHiding,
     {.en = "The window manager of this session doesn't hide windows when it is asked to.",
      .es = "El gestor de ventanas de esta sesión no oculta las ventanas cuando se le pide.",
      .zh = "此会话的窗口管理器不响应隐藏窗口的请求。",
      .hi = "इस सत्र का विंडो मैनेजर कहने पर विंडो नहीं छिपाता।",
      .ar = "لا يخفي مدير النوافذ في هذه الجلسة النوافذ عندما يُطلب منه ذلك.",
      .pt = "O gerenciador de janelas desta sessão não oculta janelas quando solicitado.",
      .fr =
          "Le gestionnaire de fenêtres de cette session ne masque pas les fenêtres quand on le lui demande.",
      .ru = "Оконный менеджер этого сеанса не скрывает окна по запросу."}},
    {PlatformKey::extensionMissing,
     {.en = "Curtain's extension for GNOME isn't installed, so apps can't be hidden.",
      .es = "La extensión de Curtain para GNOME no está instalada, así que no se pueden ocultar apps.",
      .zh = "未安装 Curtain 的 GNOME 扩展，因此无法隐藏应用。",
      .hi = "GNOME के लिए Curtain का एक्सटेंशन इंस्टॉल नहीं है, इसलिए ऐप नहीं छिपाए जा सकते।",
      .ar = "إضافة Curtain لبيئة GNOME غير مثبّتة، لذا لا يمكن إخفاء التطبيقات.",
      .pt = "A extensão do Curtain para o GNOME não está instalada; por isso, não é possível ocultar apps.",
      .fr = "L’extension de Curtain pour GNOME n’est pas installée : impossible de masquer des apps.",
      .ru = "Расширение Curtain для GNOME не установлено, поэтому скрыть приложения нельзя."}},
    {PlatformKey::extensionOff,
     {.en = "Curtain's extension for GNOME is switched off, so apps can't be hidden.",
      .es = "La extensión de Curtain para GNOME está desactivada, así que no se pueden ocultar apps.",
      .zh = "Curtain 的 GNOME 扩展已关闭，因此无法隐藏应用。",
      .hi = "GNOME के लिए Curtain का एक्सटेंशन बंद है, इसलिए ऐप नहीं छिपाए जा सकते।",
      .ar = "إضافة Curtain لبيئة GNOME معطّلة، لذا لا يمكن إخفاء التطبيقات.",
      .pt = "A extensão do Curtain para o GNOME está desativada; por isso, não é possível ocultar apps.",
      .fr = "L’extension de Curtain pour GNOME est désactivée : impossible de masquer des apps.",
      .ru = "Расширение Curtain для GNOME выключено, поэтому скрыть приложения нельзя."}},
    {PlatformKey::extensionFails,
     {.en = "Curtain's extension doesn't work in this version of GNOME, so apps can't be hidden.",
      .es =
          "La extensión de Curtain no funciona en esta versión de GNOME, así que no se pueden ocultar apps.",
      .zh = "Curtain 的扩展在此版本的 GNOME 中无法运行，因此无法隐藏应用。",
      .hi = "Curtain का एक्सटेंशन GNOME के इस संस्करण में काम नहीं करता, इसलिए ऐप नहीं छिपाए जा सकते।",
      .ar = "لا تعمل إضافة Curtain في هذا الإصدار من GNOME، لذا لا يمكن إخفاء التطبيقات.",
      .pt =
          "A extensão do Curtain não funciona nesta versão do GNOME; por isso, não é possível ocultar apps.",
      .fr =
          "L’extension de Curtain ne fonctionne pas dans cette version de GNOME : impossible de masquer des "
          "apps.",
      .ru = "Расширение Curtain не работает в этой версии GNOME, поэтому скрыть приложения нельзя."}},
    {PlatformKey::hidingNotKnownYet,
     {.en = "Whether apps can be hidden in this session isn't known yet.",
      .es = "Aún no se sabe si en esta sesión se pueden ocultar apps.",
      .zh = "尚不清楚此会话能否隐藏应用。",
      .hi = "अभी पता नहीं है कि इस सत्र में ऐप छिपाए जा सकते हैं या नहीं।",
      .ar = "لا يُعرف بعد ما إذا كان يمكن إخفاء التطبيقات في هذه الجلسة.",
      .pt = "Ainda não se sabe se é possível ocultar apps nesta sessão.",
      .fr = "On ne sait pas encore si des apps peuvent être masquées dans cette session.",
      .ru = "Пока неизвестно, можно ли скрывать приложения в этом сеансе."}},
    // What helps. The login screen is where one chooses a session.
    {PlatformKey::chooseX11Session,
     {.en = "At the login screen, choose a session marked X11 or Xorg, or a desktop such as Xfce.",
      .es = "En la pantalla de inicio de sesión, elige una sesión marcada como X11 o Xorg, o un entorno de "
            "escritorio como Xfce.",
      .zh = "请在登录界面选择标有 X11 或 Xorg 的会话，或 Xfce 等桌面环境。",
      .hi = "लॉगिन स्क्रीन पर ऐसा सत्र चुनें जिस पर X11 या Xorg लिखा हो, या Xfce जैसा कोई डेस्कटॉप।",
      .ar = "في شاشة تسجيل الدخول، اختر جلسة كُتب عليها X11 أو Xorg، أو بيئة سطح مكتب مثل Xfce.",
      .pt = "Na tela de login, escolha uma sessão identificada como X11 ou Xorg, ou um ambiente gráfico como "
            "Xfce.",
      .fr = "À l’écran de connexion, choisissez une session marquée X11 ou Xorg, ou un environnement de "
            "bureau comme Xfce.",
      .ru = "На экране входа выберите сеанс с пометкой X11 или Xorg либо рабочую среду вроде Xfce."}},
    {PlatformKey::startWindowManager,
     {.en = "Start a window manager, or choose a complete desktop at the login screen.",
      .es = "Inicia un gestor de ventanas o elige un entorno de escritorio completo en la pantalla de inicio "
            "de sesión.",
      .zh = "请启动一个窗口管理器，或在登录界面选择完整的桌面环境。",
      .hi = "कोई विंडो मैनेजर चालू करें या लॉगिन स्क्रीन पर पूरा डेस्कटॉप चुनें।",
      .ar = "شغّل مدير نوافذ، أو اختر بيئة سطح مكتب كاملة في شاشة تسجيل الدخول.",
      .pt = "Inicie um gerenciador de janelas ou escolha um ambiente gráfico completo na tela de login.",
      .fr = "Lancez un gestionnaire de fenêtres ou choisissez un environnement de bureau complet à l’écran "
            "de connexion.",
      .ru = "Запустите оконный менеджер или выберите на экране входа полную рабочую среду."}},
    {PlatformKey::chooseAnotherDesktop,
     {.en = "At the login screen, choose a desktop such as Xfce, MATE or LXQt.",
      .es = "En la pantalla de inicio de sesión, elige un entorno de escritorio como Xfce, MATE o LXQt.",
      .zh = "请在登录界面选择 Xfce、MATE 或 LXQt 等桌面环境。",
      .hi = "लॉगिन स्क्रीन पर Xfce, MATE या LXQt जैसा कोई डेस्कटॉप चुनें।",
      .ar = "في شاشة تسجيل الدخول، اختر بيئة سطح مكتب مثل Xfce أو MATE أو LXQt.",
      .pt = "Na tela de login, escolha um ambiente gráfico como Xfce, MATE ou LXQt.",
      .fr = "À l’écran de connexion, choisissez un environnement de bureau comme Xfce, MATE ou LXQt.",
      .ru = "На экране входа выберите рабочую среду, например Xfce, MATE или LXQt."}},
    {PlatformKey::installExtension,
     {.en = "Install Curtain from its package, then log out and back in once.",
      .es = "Instala Curtain desde su paquete; después, cierra la sesión y vuelve a iniciarla una vez.",
      .zh = "请用软件包安装 Curtain，然后注销并重新登录一次。",
      .hi = "Curtain को उसके पैकेज से इंस्टॉल करें, फिर एक बार लॉगआउट करके दोबारा लॉगिन करें।",
      .ar = "ثبّت Curtain من حزمته، ثم سجّل الخروج والدخول مرة واحدة.",
      .pt = "Instale o Curtain pelo pacote; depois, encerre a sessão e entre novamente.",
      .fr = "Installez Curtain depuis son paquet, puis fermez et rouvrez votre session une fois.",
      .ru = "Установите Curtain из пакета, затем выйдите из системы и войдите снова."}},
    {PlatformKey::switchExtensionOn,
     {.en = "Switch it on here or in the Extensions app.",
      .es = "Actívala aquí o en la app Extensiones.",
      .zh = "请在此处或“扩展”应用中将其打开。",
      .hi = "उसे यहाँ या एक्सटेंशन ऐप में चालू करें।",
      .ar = "فعّلها هنا أو في تطبيق الإضافات.",
      .pt = "Ative-a aqui ou no app Extensões.",
      .fr = "Activez-la ici ou dans l’app Extensions.",
      .ru = "Включите его здесь или в приложении «Расширения»."}},
    {PlatformKey::privateAppsUnseen,
     {.en = "Curtain can't tell whether your private apps can be seen.",
      .es = "Curtain no puede saber si se ven tus apps privadas.",
      .zh = "Curtain 无法判断你的私密应用是否可见。",
      .hi = "Curtain को पता नहीं कि आपके निजी ऐप दिख रहे हैं या नहीं।",
      .ar = "لا يستطيع Curtain معرفة ما إذا كانت تطبيقاتك الخاصة ظاهرة.",
      .pt = "O Curtain não consegue saber se seus apps privados estão visíveis.",
      .fr = "Curtain ne peut pas savoir si vos apps privées sont visibles.",
      .ru = "Curtain не может определить, видны ли ваши личные приложения."}},
    {PlatformKey::runningAppsUnseen,
     {.en = "This session doesn't tell of every running app; find the others among the installed ones.",
      .es = "Esta sesión no informa de todas las apps abiertas; busca las demás entre las instaladas.",
      .zh = "此会话不会透露所有正在运行的应用；请在已安装的应用中查找其余应用。",
      .hi = "यह सत्र हर चालू ऐप के बारे में नहीं बताता; बाकी ऐप इंस्टॉल किए गए ऐप में खोजें।",
      .ar = "لا تكشف هذه الجلسة عن كل التطبيقات قيد التشغيل؛ ابحث عن البقية بين التطبيقات المثبّتة.",
      .pt = "Esta sessão não informa todos os apps abertos; procure os outros entre os instalados.",
      .fr = "Cette session n’indique pas toutes les apps ouvertes ; cherchez les autres parmi celles qui "
            "sont installées.",
      .ru = "Этот сеанс сообщает не обо всех запущенных приложениях; остальные ищите среди установленных."}},
    {PlatformKey::noSettingsPage,
     {.en = "No matching settings page was found. Look in your desktop's menus or panel.",
      .es = "Página de configuración no encontrada. Búscala en los menús o el panel.",
      .zh = "未找到相应的设置页面。请在桌面环境的菜单或面板中查找。",
      .hi = "इससे जुड़ा कोई सेटिंग पेज नहीं मिला। अपने डेस्कटॉप के मेनू या पैनल में देखें।",
      .ar = "لم يُعثر على صفحة إعدادات مناسبة. ابحث في قوائم بيئة سطح المكتب أو لوحتها.",
      .pt = "Página de configurações não encontrada. Procure nos menus ou no painel.",
      .fr = "Page de paramètres introuvable. Cherchez dans les menus ou le tableau de bord.",
      .ru = "Страница настроек не найдена. Поищите в меню или на панели."}},
    {PlatformKey::noPermissionPage,
     {.en = "No matching settings page was found. Allow access with your desktop's own tools, then continue.",
      .es = "Página de configuración no encontrada. Permite el acceso con las herramientas de tu entorno de "
            "escritorio y continúa.",
      .zh = "未找到相应的设置页面。请用桌面环境自带的工具允许访问，然后继续。",
      .hi = "इससे जुड़ा कोई सेटिंग पेज नहीं मिला। अपने डेस्कटॉप के टूल से अनुमति दें, फिर जारी रखें।",
      .ar = "لم يُعثر على صفحة إعدادات مناسبة. اسمح بالوصول من أدوات بيئة سطح المكتب، ثم اضغط «متابعة».",
      .pt = "Página de configurações não encontrada. Permita o acesso com as ferramentas do sistema e "
            "continue.",
      .fr = "Page de paramètres introuvable. Autorisez l’accès avec les outils de l’environnement de bureau, "
            "puis continuez.",
      .ru = "Страница настроек не найдена. Разрешите доступ средствами системы и нажмите «Продолжить»."}},
    {PlatformKey::noTray,
     {.en = "No system tray was found. Add one to see Curtain's icon.",
      .es = "No se encontró ninguna bandeja del sistema. Añade una para ver el icono de Curtain.",
      .zh = "未找到系统托盘。请添加托盘以显示 Curtain 图标。",
      .hi = "कोई सिस्टम ट्रे नहीं मिली। Curtain का आइकन देखने के लिए ट्रे जोड़ें।",
      .ar = "لم يُعثر على علبة النظام. أضفها لتظهر أيقونة Curtain.",
      .pt = "Nenhuma bandeja do sistema foi encontrada. Adicione uma para ver o ícone do Curtain.",
      .fr = "Aucune zone de notification trouvée. Ajoutez-en une pour voir l’icône de Curtain.",
      .ru = "Системный лоток не найден. Добавьте его, чтобы видеть значок Curtain."}},
    {PlatformKey::noGlobalShortcuts,
     {.en = "This session doesn't support global shortcuts.",
      .es = "Esta sesión no admite atajos globales.",
      .zh = "此会话不支持全局快捷键。",
      .hi = "इस सत्र में ग्लोबल शॉर्टकट काम नहीं करते।",
      .ar = "لا تدعم هذه الجلسة الاختصارات العامة.",
      .pt = "Esta sessão não é compatível com atalhos globais.",
      .fr = "Cette session ne prend pas en charge les raccourcis globaux.",
      .ru = "В этом сеансе глобальные сочетания клавиш не работают."}},
    {PlatformKey::shortcutInX11WindowsOnly,
     {.en = "The shortcut works only while a window of an X11 program has the focus.",
      .es = "El atajo solo funciona mientras está activa la ventana de un programa de X11.",
      .zh = "仅当 X11 程序的窗口处于活动状态时，快捷键才有效。",
      .hi = "शॉर्टकट तभी काम करता है जब किसी X11 प्रोग्राम की विंडो सक्रिय हो।",
      .ar = "لا يعمل الاختصار إلا عندما تكون نافذة برنامج X11 نشطة.",
      .pt = "O atalho só funciona enquanto a janela de um programa X11 está ativa.",
      .fr = "Le raccourci ne fonctionne que lorsqu’une fenêtre d’un programme X11 est active.",
      .ru = "Сочетание клавиш работает, только пока активно окно программы X11."}},
    {PlatformKey::noShareDetection,
     {.en = "Screen sharing can't be detected in this session.",
      .es = "En esta sesión no se puede detectar cuándo compartes la pantalla.",
      .zh = "此会话中无法检测屏幕共享。",
      .hi = "इस सत्र में स्क्रीन शेयर होने का पता नहीं लगाया जा सकता।",
      .ar = "لا يمكن اكتشاف مشاركة الشاشة في هذه الجلسة.",
      .pt = "Não é possível detectar o compartilhamento de tela nesta sessão.",
      .fr = "Impossible de détecter le partage d’écran dans cette session.",
      .ru = "В этом сеансе показ экрана не распознаётся."}},
    {PlatformKey::shareDetectionUnknown,
     {.en = "Curtain can't tell at the moment whether the screen is shared.",
      .es = "En este momento, Curtain no puede saber si compartes la pantalla.",
      .zh = "Curtain 暂时无法判断屏幕是否正在共享。",
      .hi = "Curtain को अभी पता नहीं कि स्क्रीन शेयर हो रही है या नहीं।",
      .ar = "لا يستطيع Curtain حاليًا معرفة ما إذا كانت الشاشة تُشارَك.",
      .pt = "No momento, o Curtain não consegue saber se a tela está sendo compartilhada.",
      .fr = "Pour l’instant, Curtain ne peut pas savoir si l’écran est partagé.",
      .ru = "Сейчас Curtain не может определить, идёт ли показ экрана."}},
    // The name of the file stands below.
    {PlatformKey::settingsDamaged,
     {.en =
          "The settings file is damaged, so the defaults apply and no app is private. A copy of it was kept.",
      .es = "El archivo de configuración está dañado: se usan los valores predeterminados y ninguna app es "
            "privada. Se guardó una copia.",
      .zh = "设置文件已损坏，因此使用默认设置，没有私密应用。已保留一份副本。",
      .hi = "सेटिंग की फ़ाइल खराब है, इसलिए डिफ़ॉल्ट सेटिंग लागू हैं और कोई ऐप निजी नहीं है। उसकी एक कॉपी रखी गई है।",
      .ar = "ملف الإعدادات تالف، لذا تُستخدم الإعدادات الافتراضية ولا يوجد أي تطبيق خاص. حُفظت نسخة منه.",
      .pt = "O arquivo de configurações está danificado: valem os padrões e nenhum app é privado. Uma cópia "
            "dele foi guardada.",
      .fr =
          "Le fichier des paramètres est endommagé : les valeurs par défaut s’appliquent et aucune app n’est "
          "privée. Une copie a été conservée.",
      .ru = "Файл настроек повреждён: действуют настройки по умолчанию, личных приложений нет. Его копия "
            "сохранена."}},
    {PlatformKey::settingsUnreadable,
     {.en = "The settings file can't be read, so the defaults apply and no app is private.",
      .es = "No se puede leer el archivo de configuración: se usan los valores predeterminados y ninguna app "
            "es privada.",
      .zh = "无法读取设置文件，因此使用默认设置，没有私密应用。",
      .hi = "सेटिंग की फ़ाइल पढ़ी नहीं जा सकती, इसलिए डिफ़ॉल्ट सेटिंग लागू हैं और कोई ऐप निजी नहीं है।",
      .ar = "تتعذر قراءة ملف الإعدادات، لذا تُستخدم الإعدادات الافتراضية ولا يوجد أي تطبيق خاص.",
      .pt = "Não é possível ler o arquivo de configurações: valem os padrões e nenhum app é privado.",
      .fr =
          "Le fichier des paramètres est illisible : les valeurs par défaut s’appliquent et aucune app n’est "
          "privée.",
      .ru = "Файл настроек не читается: действуют настройки по умолчанию, личных приложений нет."}},
    {PlatformKey::privateAppsLost,
     {.en = "Your private apps are not known, since the settings could not be read. Choose them again in the "
            "settings.",
      .es = "No se sabe cuáles son tus apps privadas, porque no se pudo leer la configuración. Vuelve a "
            "elegirlas en la configuración.",
      .zh = "由于无法读取设置，无法得知你的私密应用。请在设置中重新选择。",
      .hi = "सेटिंग पढ़ी नहीं जा सकी, इसलिए आपके निजी ऐप पता नहीं हैं। सेटिंग में उन्हें फिर से चुनें।",
      .ar = "تطبيقاتك الخاصة غير معروفة لأن الإعدادات تعذرت قراءتها. اخترها من جديد في الإعدادات.",
      .pt = "Não se sabe quais são seus apps privados, porque não foi possível ler as configurações. "
            "Escolha-os "
            "de novo nas configurações.",
      .fr =
          "Vos apps privées ne sont pas connues, car les paramètres n’ont pas pu être lus. Choisissez-les à "
          "nouveau dans les paramètres.",
      .ru = "Личные приложения неизвестны, так как настройки не удалось прочитать. Выберите их снова в "
            "настройках."}},
    // In the dark picture of a camera, two short lines at most.
    {PlatformKey::cameraForbidden,
     {.en =
          "Your account may not use this computer's cameras. Log in at its own screen, or ask to be added to "
          "the group video.",
      .es = "Tu cuenta no puede usar las cámaras de este equipo. Inicia sesión en su propia pantalla o pide "
            "que "
            "te añadan al grupo video.",
      .zh = "你的账户无权使用这台电脑的摄像头。请在它自己的屏幕上登录，或请管理员将你加入 video 组。",
      .hi = "आपके खाते को इस कंप्यूटर के कैमरे इस्तेमाल करने की अनुमति नहीं है। सीधे इसी कंप्यूटर पर लॉगिन करें "
            "या ख़ुद को video समूह में जुड़वाएँ।",
      .ar = "لا يُسمح لحسابك باستخدام كاميرات هذا الجهاز. سجّل الدخول أمام شاشته، أو اطلب إضافتك إلى المجموعة "
            "video.",
      .pt = "Sua conta não pode usar as câmeras deste computador. Inicie a sessão na tela dele ou peça para "
            "ser "
            "incluído no grupo video.",
      .fr = "Votre compte ne peut pas utiliser les caméras de cet ordinateur. Ouvrez une session sur son "
            "propre "
            "écran ou demandez à rejoindre le groupe video.",
      .ru = "Вашей учётной записи нельзя пользоваться камерами этого компьютера. Войдите за его экраном или "
            "попросите добавить вас в группу video."}},
    {PlatformKey::cameraGone,
     {.en = "The camera is not plugged in any more.",
      .es = "La cámara ya no está conectada.",
      .zh = "摄像头已断开连接。",
      .hi = "कैमरा अब जुड़ा हुआ नहीं है।",
      .ar = "لم تعد الكاميرا موصولة.",
      .pt = "A câmera não está mais conectada.",
      .fr = "La caméra n’est plus branchée.",
      .ru = "Камера больше не подключена."}},
    {PlatformKey::cameraInUse,
     {.en = "Another program is using the camera.",
      .es = "Otro programa está usando la cámara.",
      .zh = "其他程序正在使用摄像头。",
      .hi = "कोई दूसरा प्रोग्राम कैमरा इस्तेमाल कर रहा है।",
      .ar = "يستخدم برنامج آخر الكاميرا.",
      .pt = "Outro programa está usando a câmera.",
      .fr = "Un autre programme utilise la caméra.",
      .ru = "Камеру использует другая программа."}},
    {PlatformKey::cameraDoesNotStart,
     {.en = "The camera doesn't start. Another program may be using it.",
      .es = "La cámara no se inicia. Quizá la esté usando otro programa.",
      .zh = "摄像头无法启动，可能正被其他程序使用。",
      .hi = "कैमरा शुरू नहीं हो रहा। शायद कोई दूसरा प्रोग्राम उसे इस्तेमाल कर रहा है।",
      .ar = "لا تبدأ الكاميرا. ربما يستخدمها برنامج آخر.",
      .pt = "A câmera não inicia. Talvez outro programa a esteja usando.",
      .fr = "La caméra ne démarre pas. Un autre programme l’utilise peut-être.",
      .ru = "Камера не запускается. Возможно, её использует другая программа."}},
    {PlatformKey::cameraSendsNothing,
     {.en = "The camera sends no picture. Curtain keeps trying.",
      .es = "La cámara no envía imagen. Curtain sigue intentándolo.",
      .zh = "摄像头没有画面。Curtain 会继续尝试。",
      .hi = "कैमरे से तस्वीर नहीं आ रही। Curtain कोशिश करता रहेगा।",
      .ar = "لا تُرسل الكاميرا صورة. يواصل Curtain المحاولة.",
      .pt = "A câmera não envia imagem. O Curtain continua tentando.",
      .fr = "La caméra n’envoie pas d’image. Curtain continue d’essayer.",
      .ru = "Камера не передаёт изображение. Curtain продолжает попытки."}},
    {PlatformKey::privacyModeEndedBody,
     {.en = "Another program asked for it.",
      .es = "Lo ha pedido otro programa.",
      .zh = "这是另一个程序要求的。",
      .hi = "किसी दूसरे प्रोग्राम ने ऐसा करने को कहा।",
      .ar = "طلب ذلك برنامج آخر.",
      .pt = "Outro programa pediu isso.",
      .fr = "Un autre programme l’a demandé.",
      .ru = "Об этом попросила другая программа."}},
    {PlatformKey::privacyModeResumed,
     {.en = "Curtain ended unexpectedly, and goes on where it was.",
      .es = "Curtain se cerró inesperadamente y continúa donde estaba.",
      .zh = "Curtain 曾意外退出，现在从中断处继续。",
      .hi = "Curtain अचानक बंद हो गया था और वहीं से जारी है।",
      .ar = "توقف Curtain فجأة، وهو يواصل من حيث كان.",
      .pt = "O Curtain fechou inesperadamente e continua de onde estava.",
      .fr = "Curtain s’est arrêté de façon inattendue et reprend où il en était.",
      .ru = "Curtain неожиданно завершился и продолжает с того же места."}},
    {PlatformKey::privacyModeNotResumed,
     {.en = "Curtain ended twice while switching it on again. What was hidden stays hidden.",
      .es = "Curtain se cerró dos veces al volver a activarlo. Lo que estaba oculto sigue oculto.",
      .zh = "Curtain 在重新开启它时两次退出。已隐藏的内容保持隐藏。",
      .hi = "इसे फिर से चालू करते समय Curtain दो बार बंद हो गया। जो छिपा था, वह छिपा रहेगा।",
      .ar = "توقف Curtain مرتين أثناء إعادة تفعيل وضع الخصوصية. ما كان مخفيًا يبقى مخفيًا.",
      .pt = "O Curtain fechou duas vezes ao reativar o modo de privacidade. O que estava oculto continua "
            "oculto.",
      .fr = "Curtain s’est arrêté deux fois en le réactivant. Ce qui était masqué le reste.",
      .ru = "Curtain дважды завершился при повторном включении режима. Скрытое остаётся скрытым."}},
    {PlatformKey::photoCopied,
     {.en = "The photo is on the clipboard.",
      .es = "La foto está en el portapapeles.",
      .zh = "照片已复制到剪贴板。",
      .hi = "फ़ोटो क्लिपबोर्ड पर है।",
      .ar = "الصورة في الحافظة.",
      .pt = "A foto está na área de transferência.",
      .fr = "La photo est dans le presse-papiers.",
      .ru = "Фото в буфере обмена."}},
    {PlatformKey::photoNotCopied,
     {.en = "The photo could not be copied.",
      .es = "No se pudo copiar la foto.",
      .zh = "无法复制照片。",
      .hi = "फ़ोटो कॉपी नहीं हो सकी।",
      .ar = "تعذّر نسخ الصورة.",
      .pt = "Não foi possível copiar a foto.",
      .fr = "La photo n’a pas pu être copiée.",
      .ru = "Не удалось скопировать фото."}},
    {PlatformKey::photoSaved,
     {.en = "The photo is saved.",
      .es = "La foto está guardada.",
      .zh = "照片已保存。",
      .hi = "फ़ोटो सहेज ली गई है।",
      .ar = "حُفظت الصورة.",
      .pt = "A foto está salva.",
      .fr = "La photo est enregistrée.",
      .ru = "Фото сохранено."}},
    {PlatformKey::photoNotSaved,
     {.en = "The photo could not be saved.",
      .es = "No se pudo guardar la foto.",
      .zh = "无法保存照片。",
      .hi = "फ़ोटो सहेजी नहीं जा सकी।",
      .ar = "تعذّر حفظ الصورة.",
      .pt = "Não foi possível salvar a foto.",
      .fr = "La photo n’a pas pu être enregistrée.",
      .ru = "Не удалось сохранить фото."}},
    {PlatformKey::photoNotSavedNoSpace,
     {.en = "Not saved: the disk is full.",
      .es = "No se guardó: el disco está lleno.",
      .zh = "未保存：磁盘已满。",
      .hi = "सहेजा नहीं गया: डिस्क भरी है।",
      .ar = "لم تُحفظ: القرص ممتلئ.",
      .pt = "Não foi salva: o disco está cheio.",
      .fr = "Non enregistrée : le disque est plein.",
      .ru = "Не сохранено: диск заполнен."}},
    {PlatformKey::photoNotSavedNotAllowed,
     {.en = "Not saved: you may not write there.",
      .es = "No se guardó: no tienes permiso para escribir ahí.",
      .zh = "未保存：你没有权限写入该位置。",
      .hi = "सहेजा नहीं गया: वहाँ लिखने की अनुमति नहीं है।",
      .ar = "لم تُحفظ: لا تملك إذن الكتابة هناك.",
      .pt = "Não foi salva: você não pode gravar ali.",
      .fr = "Non enregistrée : vous n’avez pas le droit d’écrire à cet endroit.",
      .ru = "Не сохранено: туда нельзя записывать."}},
    {PlatformKey::photoNotTaken,
     {.en = "The camera took no photo.",
      .es = "La cámara no tomó ninguna foto.",
      .zh = "摄像头没有拍下照片。",
      .hi = "कैमरे ने कोई फ़ोटो नहीं ली।",
      .ar = "لم تلتقط الكاميرا صورة.",
      .pt = "A câmera não tirou nenhuma foto.",
      .fr = "La caméra n’a pris aucune photo.",
      .ru = "Камера не сделала снимок."}},
    {PlatformKey::nameInUse,
     {.en = "There is a file of this name already.",
      .es = "Ya existe un archivo con ese nombre.",
      .zh = "已有同名文件。",
      .hi = "इस नाम की फ़ाइल पहले से है।",
      .ar = "يوجد ملف بهذا الاسم بالفعل.",
      .pt = "Já existe um arquivo com esse nome.",
      .fr = "Un fichier porte déjà ce nom.",
      .ru = "Файл с таким именем уже есть."}},
    {PlatformKey::noPictureYet,
     {.en = "The camera shows no picture.",
      .es = "La cámara no muestra ninguna imagen.",
      .zh = "摄像头没有显示画面。",
      .hi = "कैमरा कोई तस्वीर नहीं दिखा रहा है।",
      .ar = "لا تعرض الكاميرا أي صورة.",
      .pt = "A câmera não mostra nenhuma imagem.",
      .fr = "La caméra n’affiche aucune image.",
      .ru = "Камера не показывает изображение."}},
    {PlatformKey::shortcutInUse,
     {.en = "In use by another program.",
      .es = "En uso por otro programa.",
      .zh = "正被另一个程序使用。",
      .hi = "किसी दूसरे प्रोग्राम के उपयोग में है।",
      .ar = "يستخدمه برنامج آخر.",
      .pt = "Em uso por outro programa.",
      .fr = "Utilisé par un autre programme.",
      .ru = "Используется другой программой."}},
    {PlatformKey::noAppFound,
     {.en = "No app has this name.",
      .es = "Ninguna app tiene este nombre.",
      .zh = "没有名称相符的应用。",
      .hi = "इस नाम का कोई ऐप नहीं है।",
      .ar = "لا يوجد تطبيق بهذا الاسم.",
      .pt = "Nenhum app tem este nome.",
      .fr = "Aucune app ne porte ce nom.",
      .ru = "Нет приложения с таким названием."}},
    {PlatformKey::noAppRuns,
     {.en = "No app is open.",
      .es = "Ninguna app está abierta.",
      .zh = "没有打开的应用。",
      .hi = "कोई ऐप खुला नहीं है।",
      .ar = "لا يوجد تطبيق مفتوح.",
      .pt = "Nenhum app está aberto.",
      .fr = "Aucune app n’est ouverte.",
      .ru = "Нет открытых приложений."}},
    {PlatformKey::noAppPrivate,
     {.en = "No app is private.",
      .es = "Ninguna app es privada.",
      .zh = "没有私密应用。",
      .hi = "कोई ऐप निजी नहीं है।",
      .ar = "لا يوجد تطبيق خاص.",
      .pt = "Nenhum app é privado.",
      .fr = "Aucune app n’est privée.",
      .ru = "Нет личных приложений."}},
    {PlatformKey::launchSwitchedOff,
     {.en = "The desktop's own settings have switched this off.",
      .es = "La configuración del entorno de escritorio lo ha desactivado.",
      .zh = "桌面环境的设置已将登录时启动关闭。",
      .hi = "डेस्कटॉप की सेटिंग ने लॉगिन पर शुरू होना बंद कर दिया है।",
      .ar = "أوقفت إعدادات بيئة سطح المكتب التشغيل عند تسجيل الدخول.",
      .pt = "As configurações do ambiente gráfico desativaram isso.",
      .fr = "Les paramètres de l’environnement de bureau ont désactivé ce lancement.",
      .ru = "Запуск при входе отключён в настройках рабочей среды."}},
    {PlatformKey::whereCurtainIs,
     {.en = "A click on its icon checks everything before a call.",
      .es = "Un clic en su icono lo comprueba todo antes de una llamada.",
      .zh = "通话前点按它的图标即可检查一切。",
      .hi = "कॉल से पहले इसके आइकॉन पर क्लिक करके सब कुछ जाँचें।",
      .ar = "نقرة على أيقونته تفحص كل شيء قبل المكالمة.",
      .pt = "Um clique no ícone verifica tudo antes de uma chamada.",
      .fr = "Un clic sur son icône vérifie tout avant un appel.",
      .ru = "Щелчок по значку проверит всё перед звонком."}},
    {PlatformKey::shortcutHidesApps,
     {.en = "This shortcut hides your private apps.",
      .es = "Este atajo oculta tus apps privadas.",
      .zh = "此快捷键可隐藏私密应用。",
      .hi = "यह शॉर्टकट निजी ऐप छिपाता है।",
      .ar = "هذا الاختصار يخفي تطبيقاتك الخاصة.",
      .pt = "Este atalho oculta seus apps privados.",
      .fr = "Ce raccourci masque vos apps privées.",
      .ru = "Это сочетание скрывает личные приложения."}},
    // Buttons that show only a symbol.
    {PlatformKey::mirrorPicture,
     {.en = "Mirror picture",
      .es = "Reflejar la imagen",
      .zh = "镜像画面",
      .hi = "तस्वीर मिरर करें",
      .ar = "عكس الصورة",
      .pt = "Espelhar a imagem",
      .fr = "Effet miroir",
      .ru = "Отразить изображение"}},
    {PlatformKey::moreOptions,
     {.en = "More options",
      .es = "Más opciones",
      .zh = "更多选项",
      .hi = "और विकल्प",
      .ar = "خيارات أخرى",
      .pt = "Mais opções",
      .fr = "Plus d’options",
      .ru = "Другие действия"}},
    {PlatformKey::clearSearch,
     {.en = "Clear search",
      .es = "Borrar la búsqueda",
      .zh = "清除搜索",
      .hi = "खोज साफ़ करें",
      .ar = "مسح البحث",
      .pt = "Limpar a busca",
      .fr = "Effacer la recherche",
      .ru = "Очистить поиск"}},
    // Titles of notices.
    {PlatformKey::settingsLostTitle,
     {.en = "Your settings could not be read",
      .es = "No se pudo leer tu configuración",
      .zh = "无法读取你的设置",
      .hi = "आपकी सेटिंग पढ़ी नहीं जा सकी",
      .ar = "تعذرت قراءة إعداداتك",
      .pt = "Não foi possível ler suas configurações",
      .fr = "Vos paramètres n’ont pas pu être lus",
      .ru = "Не удалось прочитать настройки"}},
    {PlatformKey::nothingHiddenTitle,
     {.en = "No app was hidden",
      .es = "No se ocultó ninguna app",
      .zh = "没有隐藏任何应用",
      .hi = "कोई ऐप नहीं छिपाया गया",
      .ar = "لم يُخفَ أي تطبيق",
      .pt = "Nenhum app foi ocultado",
      .fr = "Aucune app n’a été masquée",
      .ru = "Ни одно приложение не скрыто"}},
    // A button that closes its window.
    {PlatformKey::close,
     {.en = "Close",
      .es = "Cerrar",
      .zh = "关闭",
      .hi = "बंद करें",
      .ar = "إغلاق",
      .pt = "Fechar",
      .fr = "Fermer",
      .ru = "Закрыть"}},
    // A button.
    {PlatformKey::switchOn,
     {.en = "Switch on",
      .es = "Activar",
      .zh = "打开",
      .hi = "चालू करें",
      .ar = "تفعيل",
      .pt = "Ativar",
      .fr = "Activer",
      .ru = "Включить"}},
    // In place of "visible" or "hidden", and of a level of risk.
    {PlatformKey::cannotTell,
     {.en = "Can't tell",
      .es = "No se sabe",
      .zh = "无法判断",
      .hi = "पता नहीं",
      .ar = "غير معروف",
      .pt = "Não se sabe",
      .fr = "Non vérifiable",
      .ru = "Неизвестно"}},
    {PlatformKey::notInstalled,
     {.en = "Not installed",
      .es = "No instalada",
      .zh = "未安装",
      .hi = "इंस्टॉल नहीं है",
      .ar = "غير مثبّت",
      .pt = "Não instalado",
      .fr = "Non installée",
      .ru = "Не установлено"}},
    // Below a score.
    {PlatformKey::privateAppsNotCounted,
     {.en = "Private apps not counted",
      .es = "Sin contar las apps privadas",
      .zh = "未计入私密应用",
      .hi = "निजी ऐप शामिल नहीं",
      .ar = "دون احتساب التطبيقات الخاصة",
      .pt = "Sem contar os apps privados",
      .fr = "Sans compter les apps privées",
      .ru = "Без учёта личных приложений"}},
    {PlatformKey::somePrivateAppsNotCounted,
     {.en = "Some private apps not counted",
      .es = "Sin contar algunas apps privadas",
      .zh = "部分私密应用未计入",
      .hi = "कुछ निजी ऐप शामिल नहीं",
      .ar = "دون احتساب بعض التطبيقات الخاصة",
      .pt = "Sem contar alguns apps privados",
      .fr = "Sans compter certaines apps privées",
      .ru = "Без учёта части личных приложений"}},
    // A title: the mode is on, and nothing can be hidden.
    {PlatformKey::privacyModeInVain,
     {.en = "Privacy mode has no effect",
      .es = "Modo de privacidad sin efecto",
      .zh = "隐私模式未起作用",
      .hi = "गोपनीयता मोड का असर नहीं",
      .ar = "وضع الخصوصية غير فعّال",
      .pt = "Modo de privacidade sem efeito",
      .fr = "Mode confidentialité sans effet",
      .ru = "Режим приватности не действует"}},
    {PlatformKey::privacyModeEndedTitle,
     {.en = "Privacy mode off",
      .es = "Modo de privacidad desactivado",
      .zh = "隐私模式已关闭",
      .hi = "गोपनीयता मोड बंद है",
      .ar = "وضع الخصوصية متوقف",
      .pt = "Modo de privacidade desativado",
      .fr = "Mode confidentialité désactivé",
      .ru = "Режим приватности выключен"}},
    {PlatformKey::choosePrivateApps,
     {.en = "Choose private apps",
      .es = "Elegir apps privadas",
      .zh = "选择私密应用",
      .hi = "निजी ऐप चुनें",
      .ar = "اختيار التطبيقات الخاصة",
      .pt = "Escolher apps privados",
      .fr = "Choisir les apps privées",
      .ru = "Выбрать личные приложения"}},
    // One of three choices above a list of apps, beside "running" and "installed".
    {PlatformKey::privateOnly,
     {.en = "Private",
      .es = "Privadas",
      .zh = "私密",
      .hi = "निजी",
      .ar = "الخاصة",
      .pt = "Privados",
      .fr = "Privées",
      .ru = "Личные"}},
    {PlatformKey::restartCurtain,
     {.en = "Restart Curtain",
      .es = "Reiniciar Curtain",
      .zh = "重新启动 Curtain",
      .hi = "Curtain फिर से शुरू करें",
      .ar = "إعادة تشغيل Curtain",
      .pt = "Reiniciar o Curtain",
      .fr = "Redémarrer Curtain",
      .ru = "Перезапустить Curtain"}},
    {PlatformKey::inYourPanelTitle,
     {.en = "Curtain is in your panel",
      .es = "Curtain está en tu panel",
      .zh = "Curtain 已在面板中",
      .hi = "Curtain आपके पैनल में है",
      .ar = "Curtain في اللوحة",
      .pt = "O Curtain está no seu painel",
      .fr = "Curtain est dans votre tableau de bord",
      .ru = "Curtain теперь на панели"}},
    {PlatformKey::runsWithoutTrayTitle,
     {.en = "Curtain is running",
      .es = "Curtain está en marcha",
      .zh = "Curtain 正在运行",
      .hi = "Curtain चल रहा है",
      .ar = "Curtain يعمل",
      .pt = "O Curtain está em execução",
      .fr = "Curtain est en marche",
      .ru = "Curtain запущен"}},
});

std::string_view textOf(const Texts& texts, AppLanguage language) {
    switch (language) {
    case AppLanguage::system:
    case AppLanguage::en:
        return texts.en;
    case AppLanguage::es:
        return texts.es;
    case AppLanguage::zh:
        return texts.zh;
    case AppLanguage::hi:
        return texts.hi;
    case AppLanguage::ar:
        return texts.ar;
    case AppLanguage::pt:
        return texts.pt;
    case AppLanguage::fr:
        return texts.fr;
    case AppLanguage::ru:
        return texts.ru;
    }
    return texts.en;
}

/// Empty when the table has no text of its own for the key.
template <class Table, class Key>
std::string_view find(const Table& table, Key key, std::string_view lang) {
    const auto found = std::ranges::find(table, key, [](const auto& entry) { return entry.key; });
    if (found == table.end()) {
        return {};
    }
    const auto code = Localizer::resolve(AppLanguage::system, lang);
    return textOf(found->texts, CurtainCore::fromRawValue<AppLanguage>(code).value_or(AppLanguage::en));
}

} // namespace

std::string_view PlatformWording::string(LocKey key, std::string_view lang) {
    const auto text = find(replacedTexts, key, lang);
    return text.empty() ? Localizer().string(key, lang) : text;
}

std::string_view PlatformWording::string(PlatformKey key, std::string_view lang) {
    return find(ownTexts, key, lang);
}

std::string PlatformWording::opening(std::string_view name, std::string_view lang) {
    constexpr std::string_view rightToLeftMark = "\u200F";
    return std::string(Localizer::isRightToLeft(lang) ? rightToLeftMark : "").append(name);
}

} // namespace Curtain
