import QtQuick

/// What a page of the wizard is about.
WizardText {
    style: Theme.title
    color: Theme.ink
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
