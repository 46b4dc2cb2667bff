#include "ui/Iconos.h"

#include <map>

namespace teskal {

QIcon iconoSimbolo(const std::string& simbolo) {
    // Symbol names to freedesktop icon names, as the Adwaita theme has them.
    static const std::map<std::string, const char*> tabla = {
        {"building.2", "go-home"},
        {"square.3.layers.3d", "view-app-grid-symbolic"},
        {"pipe.and.drop", "weather-showers-symbolic"},
        {"map", "mark-location-symbolic"},
        {"rectangle.dashed", "edit-select-all-symbolic"},
        {"clock.arrow.circlepath", "document-open-recent"},
        {"folder", "folder"},
        {"eye", "view-reveal-symbolic"},
        {"eye.slash", "view-conceal-symbolic"},
        {"plus", "list-add"},
        {"plus.circle", "list-add"},
        {"trash", "user-trash-symbolic"},
        {"scope", "zoom-fit-best-symbolic"},
        {"link", "insert-link"},
        {"paintpalette", "color-select-symbolic"},
        {"ellipsis.circle", "view-more-symbolic"},
        {"arrow.up.and.down.and.arrow.left.and.right", "object-flip-horizontal"},
        {"doc.badge.plus", "document-open"},
        {"folder.badge.plus", "document-open"},
        {"info.circle", "help-about"},
        {"scissors", "edit-cut-symbolic"},
        {"exclamationmark.triangle", "dialog-warning-symbolic"},
        {"exclamationmark.circle.fill", "dialog-error-symbolic"},
        {"clock.circle.fill", "document-open-recent-symbolic"},
        {"checkmark.seal.fill", "emblem-ok-symbolic"},
        {"checkmark.circle.fill", "emblem-default-symbolic"},
        {"doc.text.magnifyingglass", "edit-find-symbolic"},
        {"scissors.fill", "edit-cut-symbolic"},
        {"minus.circle", "list-remove"},
        {"arrow.triangle.2.circlepath", "view-refresh"},
        {"plus.circle.fill", "list-add-symbolic"},
        {"minus.circle.fill", "list-remove-symbolic"},
        {"arrow.triangle.2.circlepath.circle.fill", "emblem-synchronizing-symbolic"},
        {"equal.circle.fill", "format-justify-fill-symbolic"},
        {"ruler", "zoom-original-symbolic"},
        {"exclamationmark.triangle.fill", "dialog-warning-symbolic"},
        {"xmark.circle.fill", "process-stop-symbolic"},
        {"square.and.arrow.up.on.square", "document-send-symbolic"},
        {"printer.fill", "document-print-symbolic"},
        {"skew", "view-app-grid-symbolic"},
        {"angle", "object-rotate-right-symbolic"},
        {"mappin.circle", "mark-location-symbolic"},
        {"xmark.circle", "process-stop-symbolic"},
        {"pencil.tip.crop.circle", "document-edit-symbolic"},
        {"doc.text.fill", "x-office-document-symbolic"},
        {"archivebox", "package-x-generic-symbolic"},
        {"doc.richtext", "document-print-symbolic"},
        {"person.fill", "avatar-default-symbolic"},
        {"calendar", "x-office-calendar-symbolic"},
        {"lineweight", "format-justify-fill-symbolic"},
        {"hand.point.up", "input-mouse-symbolic"},
        {"tablecells", "x-office-spreadsheet-symbolic"},
        {"calendar.badge.clock", "x-office-calendar"},
        {"tag", "bookmark-new-symbolic"},
        {"tag.fill", "bookmark-new-symbolic"},
        {"tag.circle", "insert-text-symbolic"},
        {"tag.circle.fill", "insert-text-symbolic"},
        {"lineweight", "format-justify-fill-symbolic"},
        {"viewfinder", "zoom-fit-best-symbolic"},
        {"doc.viewfinder", "document-page-setup-symbolic"},
        {"square.and.arrow.up", "document-save-as-symbolic"},
        {"doc.richtext", "x-office-document-symbolic"},
        {"bookmark", "bookmark-new-symbolic"},
        {"bookmark.fill", "user-bookmarks-symbolic"},
        {"arrow.uturn.left.circle", "edit-undo-symbolic"},
    };
    const auto it = tabla.find(simbolo);
    const QIcon icono = QIcon::fromTheme(QString::fromLatin1(it == tabla.end() ? "folder" : it->second));
    return icono.isNull() ? QIcon::fromTheme(QStringLiteral("folder")) : icono;
}

} // namespace teskal
