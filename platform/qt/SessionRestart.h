#pragma once

class QGuiApplication;

namespace QtPlatform {

/// Has a desktop that saves its session leave the program out: whoever wants it at the login has it start
/// there, and it would start twice.
void stayOutOfSavedSessions(QGuiApplication& application);

} // namespace QtPlatform
