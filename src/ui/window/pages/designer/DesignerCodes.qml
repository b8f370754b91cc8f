import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The two symbols a receipt may carry.
Card {
    icon: "qrcode"
    title: "QR والباركود"

    DesignerSwitch {
        label: "طباعة QR"
        on: DesignerPresenter.__doc.qrEnabled

        onToggled: value => DesignerPresenter.__doc.qrEnabled = value
    }
    DesignerInput {
        counter: DesignerPresenter.qrCounter
        hint: "رابط أو نص (حتى 600 حرف)"
        label: "محتوى الـ QR"
        text: DesignerPresenter.__doc.qrData
        told: DesignerPresenter.qrProblem

        onEdited: text => DesignerPresenter.__doc.qrData = text
    }
    DesignerChoice {
        label: "حجم الـ QR"
        options: DesignerPresenter.qrSizes
        value: DesignerPresenter.__doc.qrSize

        onChosen: value => DesignerPresenter.__doc.qrSize = value
    }
    Divider {
    }
    DesignerSwitch {
        hint: "غير مدعوم في طابعات Star Line"
        label: "طباعة باركود"
        on: DesignerPresenter.__doc.barcodeEnabled

        onToggled: value => DesignerPresenter.__doc.barcodeEnabled = value
    }
    DesignerChoice {
        label: "نوع الباركود"
        options: DesignerPresenter.barcodeFormats
        value: DesignerPresenter.__doc.barcodeFormat

        onChosen: value => DesignerPresenter.__doc.barcodeFormat = value
    }
    DesignerInput {
        label: "بيانات الباركود"
        text: DesignerPresenter.__doc.barcodeData
        told: DesignerPresenter.barcodeProblem

        onEdited: text => DesignerPresenter.__doc.barcodeData = text
    }
}
