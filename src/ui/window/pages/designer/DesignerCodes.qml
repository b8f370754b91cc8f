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
        on: DesignerView.__doc.qrEnabled

        onToggled: value => DesignerView.__doc.qrEnabled = value
    }
    DesignerInput {
        counter: DesignerView.qrCounter
        hint: "رابط أو نص (حتى 600 حرف)"
        label: "محتوى الـ QR"
        text: DesignerView.__doc.qrData
        told: DesignerView.qrProblem

        onEdited: text => DesignerView.__doc.qrData = text
    }
    DesignerChoice {
        label: "حجم الـ QR"
        options: DesignerView.qrSizes
        value: DesignerView.__doc.qrSize

        onChosen: value => DesignerView.__doc.qrSize = value
    }
    Divider {
    }
    DesignerSwitch {
        hint: "غير مدعوم في طابعات Star Line"
        label: "طباعة باركود"
        on: DesignerView.__doc.barcodeEnabled

        onToggled: value => DesignerView.__doc.barcodeEnabled = value
    }
    DesignerChoice {
        label: "نوع الباركود"
        options: DesignerView.barcodeFormats
        value: DesignerView.__doc.barcodeFormat

        onChosen: value => DesignerView.__doc.barcodeFormat = value
    }
    DesignerInput {
        label: "بيانات الباركود"
        text: DesignerView.__doc.barcodeData
        told: DesignerView.barcodeProblem

        onEdited: text => DesignerView.__doc.barcodeData = text
    }
}
