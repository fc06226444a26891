;;; nebgit-blame.el --- Commit of each line of a file  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Shows the text of a buffer, also if it is not saved, with the commit before each group of lines.

;;; Code:

(require 'nebgit-log)

(defvar-local nebgit-blame--path nil
  "Path of the file from the top of the repository.")

(defvar-local nebgit-blame--revision nil
  "Commit whose file is shown; nil for the working copy.")

(defvar-local nebgit-blame--drawing nil
  "What identifies the blame that is being shown, or was last.")

(defvar nebgit-blame-mode-map
  (let ((map (make-sparse-keymap)))
    (define-key map (kbd "RET") #'nebgit-blame-show)
    (define-key map (kbd "b") #'nebgit-blame-before)
    (define-key map (kbd "l") #'nebgit-blame-log)
    (define-key map (kbd "n") #'nebgit-blame-next)
    (define-key map (kbd "p") #'nebgit-blame-previous)
    map)
  "Keys of the blame of a file.")

(define-derived-mode nebgit-blame-mode special-mode "NEBGit blame"
  "Major mode of the blame of a file.
\\{nebgit-blame-mode-map}"
  (setq truncate-lines t)
  (buffer-disable-undo))

;;;###autoload (autoload 'nebgit-blame "nebgit" nil t)
(defun nebgit-blame ()
  "Show the commit of each line of this buffer, also of text that is not saved."
  (interactive)
  (let ((root (nebgit-need-root)))
    (unless buffer-file-name
      (user-error "This buffer has no file"))
    (nebgit-blame-open root (file-relative-name buffer-file-name root) nil (line-number-at-pos)
                       (and (buffer-modified-p) (nebgit-buffer-content)))))

(defun nebgit-buffer-content ()
  "Return what the buffer would have in its file, as a request takes it."
  (let* ((text (save-restriction
                 (widen)
                 (buffer-substring-no-properties (point-min) (point-max))))
         (bytes (encode-coding-string text (or buffer-file-coding-system 'utf-8-unix))))
    (nebgit-decode-bytes bytes)))

(defun nebgit-decode-bytes (bytes)
  "Return BYTES, a unibyte string, as text in which invalid bytes stay as they are."
  (decode-coding-string bytes 'utf-8-unix))

(defun nebgit-blame-open (root path revision line &optional content)
  "Show the blame of PATH in REVISION of ROOT, with point on LINE.
A REVISION of nil is the working copy, in which CONTENT may be the text."
  (let ((buffer (get-buffer-create (format "*nebgit blame: %s %s*" (directory-file-name root)
                                           (nebgit-printable path)))))
    (with-current-buffer buffer
      (unless (derived-mode-p 'nebgit-blame-mode)
        (nebgit-blame-mode))
      (setq default-directory root))
    (nebgit-perform
     (nebgit-request 'annotation root :files (list path) :from revision :Content content)
     :title "blame"
     :success (lambda (records _)
                (when (buffer-live-p buffer)
                  (with-current-buffer buffer
                    (setq nebgit-blame--path path
                          nebgit-blame--revision revision)
                    (nebgit-blame--draw records line))))
     :failure (lambda (problem outcome)
                (when (and (buffer-live-p buffer) (zerop (buffer-size buffer)))
                  (quit-windows-on buffer t))
                (nebgit-show-error problem outcome)))
    (pop-to-buffer buffer)
    buffer))

(defun nebgit-blame--draw (records line)
  "Show RECORDS, of type 1003, with point on LINE."
  (let ((left (sort records (lambda (a b)
                              (< (nebgit-field a FirstLine) (nebgit-field b FirstLine)))))
        (buffer (current-buffer))
        (token (list line))
        lines)
    (with-silent-modifications (erase-buffer))
    (setq nebgit-blame--drawing token)
    (nebgit-in-slices
     (lambda ()
       (when (and (buffer-live-p buffer)
                  (eq (buffer-local-value 'nebgit-blame--drawing buffer) token)
                  (or lines left))
         (unless lines
           (setq lines (nebgit-blame--lines (pop left))))
         (with-current-buffer buffer
           (nebgit-blame--insert (pop lines) line))
         t)))))

(defun nebgit-blame--lines (record)
  "Return the lines of the group RECORD, a list of (RECORD NUMBER HEAD TEXT)."
  (let* ((head (nebgit-blame--head record))
         (blank (make-string (length head) ?\s)))
    (cl-loop for text across (nebgit-field record Lines)
             for number from 0
             collect (list record number (if (zerop number) head blank) text))))

(defun nebgit-blame--insert (line wanted)
  "Insert LINE of `nebgit-blame--lines' at the end.
Go there unless it is after the line with the number WANTED."
  (pcase-let ((begin (point-max))
              (`(,record ,number ,head ,text) line))
    (with-silent-modifications
      (save-excursion
        (goto-char begin)
        ;; Properties of the inserted text instead of the strings: Emacs would copy them.
        (insert head " │ " (nebgit-decode text) "\n")
        (put-text-property begin (point) 'nebgit-commit record)
        (put-text-property begin (+ begin (length head)) 'face 'shadow)))
    (when (<= (+ (nebgit-field record FirstLine) number) wanted)
      (goto-char begin))))

(defun nebgit-blame--head (record)
  "Return the text before the first line of the group RECORD, of a fixed width."
  (truncate-string-to-width
   (if (nebgit-field record IsUncommitted)
       "not committed"
     (format "%s %s %s" (substring (nebgit-field record ObjectID) 0 8)
             (substring (nebgit-date (nebgit-field record AuthorTime)
                                     (nebgit-field record AuthorTimeOffset))
                        0 10)
             (nebgit-printable (nebgit-decode (or (nebgit-field record Author) "")))))
   34 nil ?\s "…"))

(defun nebgit-blame--record ()
  "Return the group of lines at point, if it is committed."
  (let ((record (get-text-property (point) 'nebgit-commit)))
    (cond
     ((not record) (user-error "No line here"))
     ((nebgit-field record IsUncommitted) (user-error "This line is not committed"))
     (t record))))

(defun nebgit-blame-show ()
  "Show the commit of the line at point."
  (interactive)
  (nebgit-revision default-directory (nebgit-field (nebgit-blame--record) ObjectID)))

(defun nebgit-blame-before ()
  "Show the blame of the file before the commit of the line at point."
  (interactive)
  (let* ((record (nebgit-blame--record))
         (previous (nebgit-field record PreviousID)))
    (unless previous
      (user-error "The history of this line ends here"))
    (nebgit-blame-open default-directory (nebgit-name record OriginalPath) previous
                       (+ (nebgit-field record OriginalLine) (nebgit-blame--number record)))))

(defun nebgit-blame--number (record)
  "Return the number of the line of point in its group RECORD, from 0."
  (- (line-number-at-pos nil t) (nebgit-field record FirstLine)))

(defun nebgit-blame-log ()
  "Show the log of the file."
  (interactive)
  (nebgit-log-open default-directory
                   (list :files (list nebgit-blame--path) :Follow t :from nebgit-blame--revision)
                   nebgit-blame--path))

(defun nebgit-blame-next ()
  "Go to the next group of lines."
  (interactive)
  (goto-char (or (next-single-property-change (line-beginning-position) 'nebgit-commit)
                 (point))))

(defun nebgit-blame-previous ()
  "Go to the previous group of lines."
  (interactive)
  (goto-char (or (previous-single-property-change (line-beginning-position) 'nebgit-commit)
                 (point))))

(provide 'nebgit-blame)
;;; nebgit-blame.el ends here
