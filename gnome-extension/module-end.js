
export default class CurtainExtension extends Extension {
    enable() {
        this._parts = new Parts();
    }

    disable() {
        this._parts.destroy();
        this._parts = null;
    }
}
