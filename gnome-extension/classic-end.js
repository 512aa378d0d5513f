
class CurtainExtension {
    enable() {
        this._parts = new Parts();
    }

    disable() {
        this._parts.destroy();
        this._parts = null;
    }
}

var extension = {init: () => new CurtainExtension()};
