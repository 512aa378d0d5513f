#pragma once

#include <QImageIOPlugin>

/// Reads PNG pictures in place of the toolkit's own reader, of which it knows the same files, and says
/// nothing about faulty ones. In no namespace, since the toolkit's macros for plugins know none.
class PngPlugin : public QImageIOPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QImageIOHandlerFactoryInterface_iid FILE "PngPlugin.json")

public:
    Capabilities capabilities(QIODevice* device, const QByteArray& format) const override;
    QImageIOHandler* create(QIODevice* device, const QByteArray& format) const override;
};
